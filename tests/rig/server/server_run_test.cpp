#include "rig/server/server_run.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>
#include <thread>

#include "distribution/download.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/message_of.h"
#include "tests/support/temporary_folder.h"

using testing::HasSubstr;

namespace {

constexpr double servedSeconds = 3; // a busy machine is to have asked for all by then

/// The command on a thread of its own for some seconds, whose words go to a file.
class ServerRunThreads : public testing::Test {
protected:
    ServerRunThreads() { writeFile("served/downloads/versions.json", "{}"); }
    ~ServerRunThreads() override {
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    void serve(const std::string& fault) {
        thread_ = std::thread([fault] {
            std::ofstream out("words.txt");
            rig::runServer({"served", 0, fault, servedSeconds}, out);
        });
        eventually([] { return words().find('\n') != std::string::npos; });
    }

    static std::string words() { return std::filesystem::exists("words.txt") ? readFile("words.txt") : std::string(); }

    static std::string root() {
        const std::string said = words();
        const std::size_t begin = said.find("http://");
        return begin == std::string::npos ? "no address was told" : said.substr(begin, said.find('\n') - begin);
    }

    static bool fetch(const std::string& path) {
        const DownloadHandle handle = gf_newDownloadHandle();
        return lf_downloadTo(handle.get(), root() + path, "fetched", DownloadMode::binary);
    }

    void waitForTheEnd() { thread_.join(); }

    TemporaryFolder folder;
    LogCapture log;

private:
    std::thread thread_;
};

TEST_F(ServerRunThreads, servesTheFolderAndTellsWhatWasAskedFor) {
    serve("none");
    EXPECT_TRUE(fetch("downloads/versions.json"));
    EXPECT_FALSE(fetch("downloads/none.json"));
    waitForTheEnd();
    EXPECT_EQ(readFile("fetched"), "{}");
    EXPECT_THAT(words(), HasSubstr("/downloads/versions.json\n/downloads/none.json\n"));
}

TEST_F(ServerRunThreads, aFaultMayBeForOneFileOnly) {
    writeFile("served/downloads/11/dbase.enc", "data");
    serve("500:dbase.enc");
    EXPECT_TRUE(fetch("downloads/versions.json"));
    EXPECT_FALSE(fetch("downloads/11/dbase.enc"));
    waitForTheEnd();
}

TEST(ServerRun, anUnknownFaultIsRefused) {
    const TemporaryFolder folder;
    std::ostringstream out;
    EXPECT_THAT(messageOf([&] {
                    rig::runServer({folder.path(), 0, "sometimes", 0.0}, out);
                }),
                HasSubstr("'sometimes' is no fault"));
    EXPECT_EQ(out.str(), "");
}

TEST(ServerRun, aFolderThatIsNotThereIsRefused) {
    const TemporaryFolder folder;
    std::ostringstream out;
    EXPECT_THAT(messageOf([&] {
                    rig::runServer({folder.path() / "absent", 0, "none", 0.0}, out);
                }),
                HasSubstr("no such folder: "));
}

} // namespace
