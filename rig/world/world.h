// rig/world/world.h
// A small simulated world that behaves as a simulator does towards its clients: the user's aircraft, the clients'
// aircraft, ground, time, and whatever its scene lets happen. The same requests in the same frames give the same world.
// Without threads, locks and clock: whoever steps it owns it, with its sessions.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "rig/world/aircraft_titles.h"
#include "rig/world/client_session.h"
#include "rig/world/scene.h"
#include "rig/world/trace_writer.h"
#include "rig/world/user_motion.h"
#include "rig/world/world_object.h"

namespace rig {

inline constexpr DWORD userObjectId = 1;
inline constexpr DWORD firstAircraftId = 10;
/// Aircraft that are not the user's.
inline constexpr std::size_t maxAircraft = 1000;
/// From a creation to the moment when clients can see the aircraft.
inline constexpr int framesUntilSeen = 3;

class World {
public:
    /// The trace, if any, must outlive the world.
    World(Scene scene, AircraftTitles titles, TraceWriter* trace = nullptr);
    ~World() = default;
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// One frame: what is due happens, requests are handled, everything moves by `seconds`, clients are told. Nothing
    /// at all while the simulator stalls, and once it has quit.
    void step(double seconds);
    /// One frame of the present frame rate.
    void step() { step(1 / framesPerSecond_); }

    // What happens in it; the acts of the scene go the same way.

    void play(const TaxiAct& act);
    void play(const FlyAct& act);
    void play(const ApproachAct& act);
    void play(const TakeOffAct& act);
    void play(const JumpAct& act);
    void play(const LoadFlightAct& act);
    void play(const PositionChangedAct& act);
    void play(const PauseAct& act);
    void play(const ResumeAct& act);
    void play(const QuitAct& act);
    void play(const StallAct& act);
    void play(const FrameRateAct& act);
    void play(const RefuseTitleAct& act);
    void play(const ForeignObjectAct& act);
    void play(const DropConnectionAct& act);
    void play(const ExceptionsAct& act);
    void play(const LyingRecordAct& act);

    // How it stands.

    const Scene& scene() const { return scene_; }
    bool isRunning() const { return running_; }
    bool isStalled() const { return stallSeconds_ > 0; }
    bool hasQuit() const { return quit_; }
    double framesPerSecond() const { return framesPerSecond_; }
    double elapsedSeconds() const { return elapsed_; }     ///< since the begin
    double simulatedSeconds() const { return simulated_; } ///< the same without pauses and stalls
    ZuluTime zulu() const;
    const WorldObject& user() const { return user_; }
    /// For a test that wants the user elsewhere, or otherwise.
    WorldObject& user() { return user_; }
    /// All aircraft but the user's, by id; also those that cannot be seen yet.
    const std::map<DWORD, WorldObject>& aircraft() const { return aircraft_; }
    /// All that there have been but the user's.
    std::size_t createdAircraft() const { return nextId_ - firstAircraftId; }
    const std::vector<ClientSession*>& clients() const { return clients_; }
    double groundFeet(const LatLon& at) const { return scene_.ground.elevationFeet(at); }
    ObjectView view(const WorldObject& object) const;

    /// Where drive C: of the clients lies, for flight plans that a Windows program names; empty: nowhere else.
    void setDriveC(const std::filesystem::path& folder) { driveC_ = folder; }

    // For the sessions.

    void enter(ClientSession& client);
    void leave(ClientSession& client);

    /// An aircraft that can be seen, 0 and 1 being the user's; nothing when there is none.
    WorldObject* find(DWORD objectId);
    struct Creation {
        SIMCONNECT_EXCEPTION exception;
        DWORD objectId;
    };
    Creation create(const CreateAircraftRequest& request, const ClientSession* owner);
    void remove(DWORD objectId);
    void removeObjectsOf(const ClientSession& client);
    /// Those within this distance of the user, the user first, then by id.
    std::vector<const WorldObject*> objectsWithin(DWORD radiusMeters, DWORD objectType) const;
    bool hasFile(const std::string& path) const;
    void note(TraceEventKind kind, DWORD objectId, double value, std::string_view name, std::string_view detail = {});

private:
    void playDueActs();
    void letObjectsBeSeen();
    void tellClients(double seconds, bool secondBegins);
    void traceFrame();
    void setRunning(bool running);
    void noteAct(std::string_view text);
    using Aircraft = std::map<DWORD, WorldObject>;
    Aircraft::iterator erase(Aircraft::iterator aircraft);

    Scene scene_;
    AircraftTitles titles_;
    TraceWriter* trace_;
    std::filesystem::path driveC_;

    std::size_t nextAct_ = 0; // in the scene
    std::set<std::string, std::less<>> refusedTitles_;
    double framesPerSecond_;
    double elapsed_ = 0;
    double simulated_ = 0;
    double stallSeconds_ = 0; // that are left
    bool running_ = true;
    bool quit_ = false;

    WorldObject user_;
    UserMotion userMotion_;
    Aircraft aircraft_;
    DWORD nextId_ = firstAircraftId;
    std::vector<ClientSession*> clients_;
};

} // namespace rig
