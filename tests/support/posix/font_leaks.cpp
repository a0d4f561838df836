// For the programs that draw pictures.

/// The library that finds fonts keeps what it has found until the process ends, and does not call that a leak.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" const char* __lsan_default_suppressions();
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}
