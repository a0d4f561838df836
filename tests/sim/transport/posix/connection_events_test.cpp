#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "sim/simconnect.h"
#include "tests/support/log_capture.h"

using ::testing::ElementsAre;

namespace {

/// While one lives, the process gets no further descriptor.
class NoDescriptors {
public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &former_);
        const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        close(next);
        rlimit none = former_;
        none.rlim_cur = static_cast<rlim_t>(next);
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &former_); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit former_{};
};

HRESULT open(HANDLE* client) {
    return SimConnect_Open(client, "Tarnwing", nullptr, 0, nullptr, 0);
}

} // namespace

TEST(ConnectionEvents, withoutThemThereIsNoConnectionAndTheLogSaysWhy) {
    const LogCapture log;
    HANDLE client = &client;
    {
        const NoDescriptors none;
        EXPECT_EQ(open(&client), E_FAIL);
    }
    EXPECT_EQ(client, nullptr);
    EXPECT_THAT(log.lines(), ElementsAre("==> CreateEvent failed with 24."));
    open(&client);
}

TEST(ConnectionEvents, theSameFailureIsToldOnceUntilThereIsAnotherOutcome) {
    const LogCapture log;
    HANDLE client = nullptr;
    for (int outcome = 0; outcome < 2; ++outcome) {
        {
            const NoDescriptors none;
            open(&client);
            open(&client);
        }
        EXPECT_EQ(open(&client), E_FAIL); // nobody listens
    }
    EXPECT_THAT(log.lines(), ElementsAre("==> CreateEvent failed with 24.", "==> CreateEvent failed with 24."));
}
