// rig/world/client_session.h
// One client of the simulated world: takes its decoded requests, and yields the records that it is to get. Both fronts
// of the world stand on this. Whoever steps the world owns its sessions: no two calls at a time, of whatever sessions
// of one world.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "rig/world/data_definition.h"
#include "rig/world/record_writer.h"
#include "rig/world/requests.h"
#include "rig/world/scene.h"
#include "rig/world/sim_events.h"

namespace rig {

class World;

enum class SystemEventKind { sim, objectAdded, objectRemoved, positionChanged, flightLoaded, frame };

class ClientSession {
public:
    /// The world must outlive the session.
    explicit ClientSession(World& world);
    /// The client's aircraft leave the world with it.
    ~ClientSession();
    ClientSession(const ClientSession&) = delete;
    ClientSession& operator=(const ClientSession&) = delete;

    /// Is handled with the world's next frame, behind the ones before it.
    void receive(DWORD packetId, Request request);

    struct Output {
        std::string records;   ///< whole ones, one after the other
        std::string lyingTail; ///< what follows them and is no sound record
        bool ends = false;     ///< the simulator closes the connection behind that
    };
    /// What has come up since the last time.
    Output takeOutput();

    bool hasOpened() const { return opened_; }
    const std::string& clientName() const { return clientName_; }

    // For the world.

    void handleRequests();
    void answerPeriodicRequests(bool secondBegins);
    void sendEvent(SystemEventKind kind, DWORD data);
    void sendFlightLoaded(std::string_view file);
    void sendFrame(float frameRate, float simSpeed);
    void sendException(SIMCONNECT_EXCEPTION exception, DWORD packetId);
    /// The simulator leaves: a quit record, and the end.
    void quit();
    /// The end without a word.
    void drop();
    /// After that nothing that it sends has a meaning.
    void lie(Lie lie);

private:
    void handle(const OpenRequest& request);
    void handle(const MapClientEventRequest& request);
    void handle(const TransmitClientEventRequest& request);
    void handle(const AddEventToGroupRequest& request);
    void handle(const GroupPriorityRequest& request);
    void handle(const AddToDefinitionRequest& request);
    void handle(const ObjectDataRequest& request);
    void handle(const DataByTypeRequest& request);
    void handle(const SetDataRequest& request);
    void handle(const SubscribeRequest& request);
    void handle(const CreateAircraftRequest& request);
    void handle(const ReleaseControlRequest& request);
    void handle(const RemoveObjectRequest& request);
    void handle(const FlightPlanRequest& request);

    bool isSubscribed(SystemEventKind kind) const;
    const DataDefinition* definition(DWORD defineId) const;
    /// The client's own aircraft of this id; else an exception goes out, and there is none.
    WorldObject* ownAircraft(DWORD objectId);
    void refuse(SIMCONNECT_EXCEPTION exception);
    void beginEvent(SIMCONNECT_RECV_ID record, SystemEventKind kind, DWORD data);
    struct Entry {
        DWORD number;
        DWORD outOf;
    };
    void sendData(SIMCONNECT_RECV_ID record, DWORD requestId, DWORD defineId, const WorldObject* object, Entry entry);
    void noteWrites(DWORD objectId);

    World& world_;
    std::vector<SentRequest> waiting_;
    DWORD packetId_ = 0; // of the request that is being handled
    bool opened_ = false;
    std::string clientName_;
    std::map<DWORD, const SimEvent*> clientEvents_;
    std::map<SystemEventKind, DWORD> subscriptions_;
    std::map<DWORD, DataDefinition> definitions_;
    std::map<DWORD, ObjectDataRequest> periodicRequests_;
    std::vector<DataDefinition::NamedValue>
        written_; // by the request that is being handled; its memory serves the next

    RecordWriter records_;
    std::string lyingTail_;
    bool ended_ = false;
};

} // namespace rig
