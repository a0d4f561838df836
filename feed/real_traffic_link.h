// feed/real_traffic_link.h
// The TCP link to the RealTraffic client. It was made to talk to a flight model, which the program plays: it listens,
// the client connects and is told where the user is. Traffic does not come this way. Run thread only.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>

#include "platform/sockets.h"

extern platform::StreamSocket listenSocket;
extern platform::StreamSocket clientSocket;
/// Read by any thread.
extern std::atomic<bool> clientConnected;

/// Listens on the port that the text names. Throws std::runtime_error with the step that failed; nothing is left open
/// then.
void startListening(std::string_view port);

/// Waits for a client, as long as it takes; false when the run stops, a client is there already or the listening fails.
/// While it waits, `eachPoll` runs ten times a second.
bool waitForClient(const std::function<void()>& eachPoll = {});

/// Makes the accepted connection the client's. False, with a log line, when the connection refuses.
bool takeClient(platform::StreamSocket&& accepted);

/// Throws away what the client has said unasked: unread, it would hide from the next send that the client has closed.
void dropWhatTheClientSaid();

/// Sends the whole text. When that fails, or takes longer than a second, the client has gone: its socket is closed.
bool sendDataPacket(std::string_view text);

/// What the client has sent; waits ten seconds at most, and not while the run stops. Empty when that is nothing, or
/// more than any reply could be.
std::string receive();

/// Asks the client what it is, once, and shows the answer.
void exchangeVersions();

/// What follows from the reply to the version request: gRealTrafficHistoric and the line beside the lamp.
void lf_processRTVersion(std::string_view reply);

/// Says goodbye to a client that is connected.
void sayGoodbye();

/// Closes both sockets and the socket library. Without a link it does nothing.
void closeRealTrafficLink();
