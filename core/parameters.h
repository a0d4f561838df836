// core/parameters.h
// The settings: long-lived objects that know their key, default, limits and value, and the control that shows them.
// Numbers are atomic, texts are copied in and out under gParameterMutex; both are written by the window thread and the
// run thread, and read by all.
#pragma once

#include <array>
#include <atomic>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Guards the texts of the settings, and parameters.xml from load to save. Only the log's lock may be taken inside it.
extern std::mutex gParameterMutex;
/// Shows to a routine that its caller holds gParameterMutex.
using ParameterLock = std::lock_guard<std::mutex>;

/// Base of all settings.
class Parameter {
public:
    explicit Parameter(std::string_view parameterKey) : key(parameterKey) {}
    virtual ~Parameter() = default;
    Parameter(const Parameter&) = delete;
    Parameter& operator=(const Parameter&) = delete;

    const std::string key;
};

class BoolParameter : public Parameter {
public:
    BoolParameter(std::string_view parameterKey, bool initial)
        : Parameter(parameterKey), defaultValue(initial), value(initial) {}

    const bool defaultValue;
    std::atomic<bool> value;
};

class IntParameter : public Parameter {
public:
    IntParameter(std::string_view parameterKey, int initial, int least, int most)
        : Parameter(parameterKey), defaultValue(initial), minimum(least), maximum(most), value(initial) {}

    const int defaultValue;
    const int minimum;
    const int maximum;
    std::atomic<int> value;
};

class FloatParameter : public Parameter {
public:
    FloatParameter(std::string_view parameterKey, float initial, float least, float most)
        : Parameter(parameterKey), defaultValue(initial), minimum(least), maximum(most), value(initial) {}

    const float defaultValue;
    const float minimum;
    const float maximum;
    std::atomic<float> value;
};

class StringParameter : public Parameter {
public:
    explicit StringParameter(std::string_view parameterKey, std::string_view initial = {})
        : Parameter(parameterKey), defaultValue_(initial), value_(initial) {}

    /// A copy of the value.
    std::string value() const;
    std::string value(const ParameterLock&) const { return value_; }
    /// What XML cannot hold (control characters, bytes that are no UTF-8) becomes a question mark.
    void setValue(std::string_view text);
    void setValue(std::string_view text, const ParameterLock&);
    /// Only PROGRAM_VERSION's default changes, when a fresh file is written.
    std::string defaultValue() const;
    std::string defaultValue(const ParameterLock&) const { return defaultValue_; }
    void setDefault(std::string_view text);

private:
    std::string defaultValue_; // under gParameterMutex, as the value
    std::string value_;
};

/// The control in the main window that shows a setting.
class WindowControl {
public:
    WindowControl(int id, int y) : controlId(id), top(y) {}
    virtual ~WindowControl() = default;
    WindowControl(const WindowControl&) = delete;
    WindowControl& operator=(const WindowControl&) = delete;

    const int controlId;
    const int top; ///< y in the client area; the x belongs to the code that creates the control
};

class CheckBoxParameter : public BoolParameter, public WindowControl {
public:
    CheckBoxParameter(std::string_view parameterKey, bool initial, int id, int y)
        : BoolParameter(parameterKey, initial), WindowControl(id, y) {}
};

/// Its limits are the first and the last choice.
class ComboParameter : public IntParameter, public WindowControl {
public:
    ComboParameter(std::string_view parameterKey, int initial, std::vector<int> list, int id, int y)
        : IntParameter(parameterKey, initial, list.front(), list.back()), WindowControl(id, y),
          choices(std::move(list)) {}

    const std::vector<int> choices;
};

class FloatComboParameter : public FloatParameter, public WindowControl {
public:
    FloatComboParameter(std::string_view parameterKey, float initial, std::vector<float> list, int id, int y)
        : FloatParameter(parameterKey, initial, list.front(), list.back()), WindowControl(id, y),
          choices(std::move(list)) {}

    const std::vector<float> choices;
};

class EditParameter : public StringParameter, public WindowControl {
public:
    EditParameter(std::string_view parameterKey, int id, int y) : StringParameter(parameterKey), WindowControl(id, y) {}
};

class CallSignComboParameter : public StringParameter, public WindowControl {
public:
    CallSignComboParameter(std::string_view parameterKey, int id, int y)
        : StringParameter(parameterKey), WindowControl(id, y) {}
};

extern BoolParameter RANDOM; ///< pick livery candidates at random rather than always the first

extern CheckBoxParameter AEROWINX;                  ///< for Aerowinx PSX users: no RealTraffic link is opened
extern CheckBoxParameter COLLISION_USER_AIR;        ///< live aircraft avoid the user in the air
extern CheckBoxParameter COLLISION_USER_GND;        ///< live and static aircraft avoid the user on the ground
extern CheckBoxParameter COLLISION_LIVE_PARKED_GND; ///< live aircraft avoid static parked aircraft
extern CheckBoxParameter ALWAYS_ON_TOP;             ///< keep the window top-most
extern CheckBoxParameter SCAN_LIVERIES;             ///< scan the liveries at the next start
extern CheckBoxParameter LIG_PRIORITIZE;            ///< the order of livery folders counts in the scan
extern CheckBoxParameter AIRBORNE_ONLY;             ///< only traffic more than 300 ft above the reference elevation
extern CheckBoxParameter SCAN_AIRPORTS;             ///< scan add-on airports at the next start
extern CheckBoxParameter LIGHT_AIRCRAFT;            ///< inject light aircraft
extern CheckBoxParameter HELICOPTERS;               ///< inject helicopters
extern CheckBoxParameter HIGH_PERF_AIRCRAFT;        ///< inject fighter jets
extern CheckBoxParameter NAV_LIGHTS_WHILE_PARKED;   ///< parked aircraft keep their nav lights on
extern CheckBoxParameter AUTO_RANGE;                ///< injection radius computed, not chosen
extern CheckBoxParameter STRAIGHT_PBS_ONLY;         ///< push-backs go straight back
extern CheckBoxParameter PARK_SOFT;                 ///< soft parking rule of the static parking
extern CheckBoxParameter WEEK;                      ///< stand statistics by day of the week
extern CheckBoxParameter INITIAL_LOAD_ONLY;         ///< static parking once, no renewal
extern CheckBoxParameter GUID_CHANGES;              ///< allow livery data updates in aircraft.cfg

extern IntParameter CUSTOM_PARKING_PERCENTAGE; ///< below 0: parking_percentage counts; else this does
extern IntParameter MAIN_WINDOW_X;             ///< pixels
extern IntParameter MAIN_WINDOW_Y;             ///< pixels
extern IntParameter LAST_EPOCH_TIME;           ///< kept in the file; no reader
extern IntParameter HOLDING_THRESHOLD_METERS;  ///< radius of a holding point
extern IntParameter MAX_HOLDING_MINUTES;       ///< longest wait at a holding point
extern IntParameter MAX_FIT;                   ///< stored form of MAX_FIT_FL: twice the hours, rounded, minus 1
extern IntParameter P3D_VERSION;               ///< simulator version when the install path does not tell

extern ComboParameter MATCHING_DEPTH;     ///< deepest step of the aircraft matching
extern ComboParameter RANGE;              ///< injection radius, nm
extern ComboParameter AR_ABOVE_HEIGHT;    ///< above this altitude (ft) auto range is 100 nm
extern ComboParameter MAX_PARK_SEL;       ///< most parked aircraft, static plus live
extern ComboParameter MAX_LIVE_SEL;       ///< most live aircraft, parked ones included
extern ComboParameter AIRP_RANGE;         ///< parking-airport range, nm
extern ComboParameter AIRP_HEIGHT;        ///< height above ground (ft) below which the airport is parked
extern ComboParameter parking_percentage; ///< wanted share of occupied stands, per cent; lasts for one run
extern FloatComboParameter MAX_FIT_FL;    ///< hours; the display form of MAX_FIT

extern StringParameter PROGRAM_VERSION;         ///< version that wrote the file
extern StringParameter SIM_INSTALL_PATH;        ///< the simulator's install folder
extern StringParameter PORT_NUMBER;             ///< TCP port of the RealTraffic link
extern std::array<StringParameter, 10> lfolder; ///< extra livery folders
extern std::array<StringParameter, 10> afolder; ///< extra airport folders
extern StringParameter AIG_VERSION;             ///< versions of the installed data files
extern StringParameter DBASE_VERSION;
extern StringParameter AIRPORTS_VERSION;
extern StringParameter LIV_SCAN_VERSION; ///< versions that the last scans ran under
extern StringParameter ADDONS_SCAN_VERSION;

extern EditParameter DESTINATION;                  ///< the parking airport's code; lasts for one run
extern EditParameter BLOCK_CALLSIGN;               ///< the call sign now blocked; lasts for one run
extern EditParameter ALL_INSTALL_PATH;             ///< display form of SIM_INSTALL_PATH; not stored
extern CallSignComboParameter CALLSIGN_2_OBJECTID; ///< call-sign drop-down; not stored
extern BoolParameter AFG_AUTOMATIC;                ///< no reader; not stored

// The registration lists: they fix the order of a fresh file and of the log.
std::span<BoolParameter* const> plainBooleans();
std::span<CheckBoxParameter* const> checkBoxes();
std::span<IntParameter* const> plainIntegers();
std::span<ComboParameter* const> comboIntegers();
std::span<StringParameter* const> plainStrings();
std::span<EditParameter* const> editStrings();

/// Puts the value into the control, if the control exists. A combo without such an entry has none selected.
void showParameter(const CheckBoxParameter& parameter);
void showParameter(const ComboParameter& parameter);
void showParameter(const FloatComboParameter& parameter);
void showParameter(const EditParameter& parameter);

/// Selects another value than the setting's own in its combo.
void showChoice(const ComboParameter& parameter, int choice);

/// Hours of the "Max fit" choice to the stored number and back.
int maxFitFromHours(float hours);
float hoursFromMaxFit(int maxFit);

/// Every setting back to its default in memory; the file is not touched.
void resetParameters();
