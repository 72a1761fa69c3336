// The words of the controller's command set: every one that this library sends, and the only place where they are
// spelt. TMerakOrbis has one operation for each request; a query goes out with "?" behind its word.
#pragma once

namespace corvane::words {

// clang-format off
//                                                               query: value                command: parameters
inline constexpr const char* kGreeting = "Hello";             // -                           none
inline constexpr const char* kFarewell = "GOODBYE";           // -                           none
inline constexpr const char* kSystemInfo = "SYSTEMINFO";      // five fields                 -
inline constexpr const char* kEepromInfo = "EEPROMINFO";      // three groups of values      -
inline constexpr const char* kSaveInfo = "SAVEINFO";          // byte of an address          address,byte
inline constexpr const char* kConfigSystemData =
    "CONFIG_SYSTEM_DATA";                                     // text of a number            number,text

inline constexpr const char* kPosition = "POSITION";          // nm                          -
inline constexpr const char* kMoveTo = "MOVETO";              // -                           nm
inline constexpr const char* kGratingHome = "GRATINGHOME";    // -                           none
inline constexpr const char* kGrating = "GRATING";            // grating                     grating
inline constexpr const char* kGratings = "GRATINGS";          // list of gratings            -
inline constexpr const char* kTurret = "TURRET";              // turret                      turret
// These two are sent in mixed case.
inline constexpr const char* kStep = "Step";                  // steps                       -
inline constexpr const char* kStepAbs = "Step_abs";           // -                           steps
inline constexpr const char* kTotalSteps = "TOTALSTEPS";      // steps of a revolution       -

inline constexpr const char* kExitPort = "EXITPORT";          // port                        port
inline constexpr const char* kEntrancePort = "ENTRANCEPORT";  // port                        port
inline constexpr const char* kPeripheral = "PERIPHERAL";      // list of names               list of names
inline constexpr const char* kFilter = "FILTER";              // filter                      filter
inline constexpr const char* kFilterHome = "FILTERHOME";      // -                           none
inline constexpr const char* kFilterMode = "FILTER_MODE";     // mode                        mode
inline constexpr const char* kFocus = "FOCUS";                // steps                       -
inline constexpr const char* kFocusTotalSteps =
    "FOCUS_TOTALSTEPS";                                       // greatest position           -
inline constexpr const char* kMoveFocus = "MOVE_FOCUS";       // -                           direction,steps
inline constexpr const char* kFocusHome = "FOCUS_HOME";       // -                           none
inline constexpr const char* kSlitMode = "SLIT_MODE";         // mode of a slit              slit,mode
inline constexpr const char* kSlitWidth = "SLIT_WIDTH";       // micrometres of a slit       slit, micrometres
inline constexpr const char* kSlitHome = "SLITHOME";          // -                           slit
inline constexpr const char* kPortOutput = "PORT_OUTPUT";     // -                           bit mask
inline constexpr const char* kPortInput = "PORT_INPUT";       // bit mask                    -
inline constexpr const char* kShutterMode = "SHUTTER_MODE";   // mode                        mode
// clang-format on

}  // namespace corvane::words
