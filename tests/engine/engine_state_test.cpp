#include "engine/engine_state.h"

#include <gmock/gmock.h>

#include "tests/support/allocation_count.h"

using ::testing::ElementsAre;
using ::testing::SizeIs;

namespace {

class TwinCheckQueue : public testing::Test {
protected:
    TwinCheckQueue() { resetEngineState(); }
    ~TwinCheckQueue() override { resetEngineState(); }
};

TEST_F(TwinCheckQueue, keepsTheOrderInWhichTheyCame) {
    queueTwinCheck(7);
    queueTwinCheck(3);
    queueTwinCheck(7);
    EXPECT_THAT(twinCheckQueue, ElementsAre(7, 3, 7));
}

TEST_F(TwinCheckQueue, losesTheOldestWhenItIsFull) {
    for (std::uint32_t hexid = 0; hexid <= mostTwinChecks; ++hexid) {
        queueTwinCheck(hexid);
    }
    EXPECT_THAT(twinCheckQueue, SizeIs(mostTwinChecks));
    EXPECT_EQ(twinCheckQueue.front(), 1u);
    EXPECT_EQ(twinCheckQueue.back(), mostTwinChecks);
}

TEST_F(TwinCheckQueue, neverAllocatesHoweverManyAreBornAndNobodyServesThem) {
    const std::size_t before = allocationsOfThisThread();
    for (std::uint32_t hexid = 0; hexid < 10 * mostTwinChecks; ++hexid) {
        queueTwinCheck(hexid);
    }
    EXPECT_EQ(allocationsOfThisThread(), before);
    EXPECT_THAT(twinCheckQueue, SizeIs(mostTwinChecks));
}

} // namespace
