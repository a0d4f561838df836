// core/random.cpp
#include "core/random.h"

#include <mutex>
#include <random>

namespace {

std::mutex generatorLock;
std::mt19937 generator{std::random_device{}()}; // under generatorLock

} // namespace

int gf_randomInt(int least, int most) {
    const std::lock_guard lock(generatorLock);
    return std::uniform_int_distribution<int>(least, most)(generator);
}

bool gf_randomCoin() {
    return gf_randomInt(0, 1) == 1;
}

void gf_seedRandom(std::uint32_t seed) {
    const std::lock_guard lock(generatorLock);
    generator.seed(seed);
}
