// core/random.h
// The program's one generator of random numbers. Seeded from the system; a test seeds it to know what comes.
// Usable from any thread.
#pragma once

#include <cstdint>

/// A uniform whole number from `least` to `most`, both included.
int gf_randomInt(int least, int most);

/// One side or the other of a fair coin.
bool gf_randomCoin();

void gf_seedRandom(std::uint32_t seed);
