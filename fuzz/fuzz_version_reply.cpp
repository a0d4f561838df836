// fuzz/fuzz_version_reply.cpp
// Any bytes as the RealTraffic client's reply to the version request: no fault, and what is shown is one line of the
// known form or none.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/run_flags.h"
#include "feed/real_traffic_link.h"
#include "window/window_state.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    showRealTrafficEdition("");
    lf_processRTVersion({reinterpret_cast<const char*>(data), size});
    const std::string line = realTrafficEdition();
    const char* expected = gRealTrafficHistoric ? "RT prof edition: " : "RT stnd edition: ";
    const bool knownForm = line.empty() ? !gRealTrafficHistoric : line.starts_with(expected);
    if (!knownForm || line.find('\n') != std::string::npos) {
        std::abort();
    }
    return 0;
}
