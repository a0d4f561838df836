#include "rig/server/download_server.h"

#include <gmock/gmock.h>

#include <sstream>

#include "distribution/download.h"
#include "tests/support/log_capture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// A file of 10,000 bytes on the server, and a client that trusts what the server announces.
class DownloadServerFaults : public testing::Test {
protected:
    DownloadServerFaults() { writeFile("served/file", body); }

    bool fetch(const char* fault) {
        server.setFault(faultOfWord(fault).value());
        const DownloadHandle handle = gf_newDownloadHandle();
        return lf_downloadTo(handle.get(), server.root() + "file", "fetched", DownloadMode::binary);
    }

    static std::string someBody() {
        std::string bytes;
        for (int i = 0; bytes.size() < 10000; ++i) {
            bytes += std::to_string(i);
        }
        bytes.resize(10000);
        return bytes;
    }

    LogCapture log;
    const std::string body = someBody();
    DownloadServer server{"served"};
};

TEST_F(DownloadServerFaults, aSlowBodyArrivesWholeThoughInTwentyPieces) {
    EXPECT_TRUE(fetch("none"));
    EXPECT_EQ(server.slowPieces(), 0U);
    EXPECT_TRUE(fetch("slow"));
    EXPECT_EQ(server.slowPieces(), 20U);
    EXPECT_EQ(readFile("fetched"), body);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(DownloadServerFaults, aBodyUnderHalfItsLengthIsTakenForWholeByAClientThatCounts) {
    EXPECT_TRUE(fetch("length-half"));
    EXPECT_EQ(readFile("fetched"), body.substr(0, 5000));
}

TEST_F(DownloadServerFaults, aBodyUnderTwiceItsLengthIsMissed) {
    EXPECT_FALSE(fetch("length-double"));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("Transferred a partial file")));
}

TEST_F(DownloadServerFaults, ofAnEmptyFileNothingIsLacking) {
    writeFile("served/file", "");
    for (const char* fault : {"half", "slow", "stall", "length-half", "length-double"}) {
        EXPECT_TRUE(fetch(fault)) << fault;
        EXPECT_EQ(readFile("fetched"), "") << fault;
    }
}

TEST(DownloadServerFaultWords, areAllKnown) {
    std::istringstream words(faultWords());
    int count = 0;
    for (std::string word; words >> word;) {
        if (word == "or") {
            continue;
        }
        if (word.back() == ',') {
            word.pop_back();
        }
        EXPECT_TRUE(faultOfWord(word)) << word;
        ++count;
    }
    EXPECT_EQ(count, 10);
    EXPECT_FALSE(faultOfWord("sometimes"));
}

} // namespace
