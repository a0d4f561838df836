// The event object that a client gives to the open call.
#include <gmock/gmock.h>

#include "tests/sim/transport/client_test.h"
#include "tests/sim/transport/windows/system_event.h"

using ::testing::ElementsAre;

namespace {

class ArrivalEventThreads : public ClientTest {
protected:
    ArrivalEventThreads() : ClientTest(Road::pipe) {}

    void SetUp() override {
        ClientTest::SetUp();
        listen(peer_);
        ASSERT_EQ(openClient(0, event_.handle()), S_OK);
        ASSERT_TRUE(peer_.accepts());
        ASSERT_EQ(peer_.packet(), openPacket("Tarnwing"));
    }

    SystemEvent event_;
};

} // namespace

TEST_F(ArrivalEventThreads, isSetWhenRecordsHaveArrived) {
    const std::string record = recordBytes(4, "twelve bytes");
    EXPECT_FALSE(event_.isSet());
    for (int i = 0; i < 3; ++i) {
        dispatched_ = {};
        peer_.sends(record);
        ASSERT_TRUE(event_.waits());
        EXPECT_EQ(dispatch(), S_OK);
        EXPECT_THAT(dispatched_.records, ElementsAre(record));
    }
}

TEST_F(ArrivalEventThreads, isSetAtTheEnd) {
    peer_.closes();
    ASSERT_TRUE(event_.waits());
    EXPECT_EQ(dispatch(), E_FAIL);
}
