// feed/qnh_reader.h
// Keeps the QNH up to date from the weather datagrams. The QNH Reader thread owns the object.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "feed/traffic_reader.h"
#include "feed/udp_reader.h"

/// The QNH that the engine goes by, hectopascal, 900 to 1100. Written by the QNH Reader thread, read by any thread.
extern std::atomic<int> gQnh;

class QnhReader : public UdpReader {
public:
    void onDatagram() override;
    void onStopped() override;

    /// Counts, stop flag and QNH as at the start. Run thread.
    void reset();

private:
    std::optional<int> announcedQnh() const;
    void takeQnh(int hectopascal);

    std::atomic<int> lastQnh{standardQnh};
};

/// The one reader, used again by each run.
extern QnhReader gQnhReader;

/// The body of the QNH Reader thread; `local` when the sender is on this machine.
void runQnhReader(std::uint16_t port, bool local);
