// tests/distribution/posix/killed_download_test.cpp
// The download of a data file, killed at each of its system calls in turn.
#include <filesystem>
#include <gmock/gmock.h>
#include <iterator>
#include <sys/prctl.h>

#include "core/exit_reason.h"
#include "distribution/download.h"
#include "rig/server/download_server.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/posix/killed_process.h"
#include "tests/support/sealed_input.h"

using testing::AnyOf;
using testing::Eq;

namespace fs = std::filesystem;

namespace {

constexpr const char* file = "input/dbase.enc";

/// A download server in a process of its own: this one forks, and shall have no threads while it does.
class ServerProcess {
public:
    ServerProcess() : child_(fork()) {
        if (child_ == 0) {
            serve();
        }
        eventually([] { return fs::exists("root"); });
        setDownloadRoot(readFile("root"));
    }
    ~ServerProcess() {
        setDownloadRoot({});
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

private:
    [[noreturn]] static void serve() {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const DownloadServer server("served");
        writeFile("root.part", server.root());
        fs::rename("root.part", "root");
        for (;;) {
            pause();
        }
    }

    pid_t child_;
};

std::ptrdiff_t filesInInput() {
    return std::distance(fs::directory_iterator("input"), fs::directory_iterator());
}

} // namespace

TEST(KilledDownload, leavesTheFormerFileOrTheNewOneAndTheNextStartMakesItGood) {
    if (!canTrace()) {
        GTEST_SKIP() << "this machine lets no process trace another";
    }
    const LogCapture log;
    gf_resetExitReason();
    writeSealed("former.enc", std::string(5000, 'f'));
    writeSealed("served/downloads/11/dbase.enc", std::string(5000, 'n'));
    const std::string former = readFile("former.enc");
    const std::string renewed = readFile("served/downloads/11/dbase.enc");
    const ServerProcess server;

    int sideFiles = 0;
    constexpr int stride =
        3; // of the hundreds of calls each third, and an odd number, so that begins and ends take turns
    const auto download = [] { lf_downloadDataFile("dbase.enc", file); };
    for (int stops = 1;; stops += stride) {
        writeFile(file, former);
        if (!isKilledAfter(stops, download)) {
            break;
        }
        ASSERT_THAT(readFile(file), AnyOf(Eq(former), Eq(renewed))) << stops;
        sideFiles += filesInInput() > 1 ? 1 : 0;
    }
    EXPECT_GT(sideFiles, 5) << "the killing was meant to hit the time when the transfer is under way";
    EXPECT_TRUE(lf_downloadDataFile("dbase.enc", file));
    EXPECT_EQ(readFile(file), renewed);
    EXPECT_EQ(filesInInput(), 1) << "what the killed ones left beside it is gone";
}
