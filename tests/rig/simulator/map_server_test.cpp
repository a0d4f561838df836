#include "rig/map/map_server.h"

#include <gmock/gmock.h>

#include <httplib.h>

// No header of the world here: on Windows that of the server declares the same names.

using namespace rig;
using ::testing::HasSubstr;

TEST(MapServerThreads, servesThePageAndTheLastPublishedWorld) {
    MapServer server(0);
    httplib::Client browser("127.0.0.1", server.port());
    const auto page = browser.Get("/");
    ASSERT_TRUE(page);
    EXPECT_EQ(page->status, 200);
    EXPECT_THAT(page->body, HasSubstr("<canvas id=\"map\">"));
    EXPECT_EQ(browser.Get("/world.json")->body, "{}");
    server.publish(R"({"aircraft": []})");
    EXPECT_EQ(browser.Get("/world.json")->body, R"({"aircraft": []})");
    EXPECT_EQ(browser.Get("/other")->status, 404);
}

TEST(MapServerThreads, thePageNeedsNothingFromElsewhere) {
    MapServer server(0);
    const auto page = httplib::Client("127.0.0.1", server.port()).Get("/");
    ASSERT_TRUE(page);
    for (const char* reference : {"http://", "https://", "src=", "href="}) {
        EXPECT_EQ(page->body.find(reference), std::string::npos) << reference;
    }
}

TEST(MapServerThreads, comesAndGoesAtOnce) {
    for (int i = 0; i < 20; ++i) {
        const MapServer server(0);
    }
}
