/* The exported functions of libcorvanecif.so.2: find spectrographs of the Corvane family, drive their parts, and get a
 * wavelength for every detector pixel. Works from C11 and from C++.
 *
 * Every function returns a status number (below). Results are written through the caller's pointers, and only when the
 * status is CORVANE_SUCCESS, unless a function says otherwise; a null result pointer is skipped, unless a function
 * names a status for it.
 *
 * Numbers. `device` counts from 0 in the order in which CorvaneInitialize found the instruments. Gratings, turrets,
 * filters, slits and flipper mirrors count from 1; ports from 0. Wavelengths are in nanometres, slit widths in
 * micrometres, offsets and positions in motor steps.
 *
 * Every function that takes a device first answers CORVANE_NOT_INITIALIZED before CorvaneInitialize (and after
 * CorvaneClose), then CORVANE_P1_INVALID for an unknown device, then the status of the first bad argument:
 * CORVANE_P2_INVALID for the function's second argument, and so on. CORVANE_COMMUNICATION_ERROR means that the
 * instrument (or a part of it) could not be reached, is not fitted, or refused. These are not repeated below. Where a
 * function takes a grating, the instrument is asked first how many it has; if that fails the status is
 * CORVANE_COMMUNICATION_ERROR whatever the other arguments are.
 *
 * In quotes: the command lines that a call sends to an instrument with a motion controller.
 *
 * Functions ...IsPresent write 1 or 0 with CORVANE_SUCCESS; when an instrument with a motion controller does not answer
 * which parts it has, 0 (for the accessory lines 1). With another status they write nothing, but for
 * CorvaneWavelengthIsPresent.
 *
 * Threads: the library takes no lock. Call it from one thread at a time. A thread that is cancelled (pthread_cancel)
 * ends its call first. */
#ifndef CORVANE_CIF_H
#define CORVANE_CIF_H

#if defined(__GNUC__)
#define CORVANE_API __attribute__((visibility("default")))
#else
#define CORVANE_API
#endif

enum {
  CORVANE_COMMUNICATION_ERROR = 20201, /* any failure below the exported functions */
  CORVANE_SUCCESS = 20202,
  CORVANE_P1_INVALID = 20266, /* parameter 1: as a rule the device index */
  CORVANE_P2_INVALID = 20267,
  CORVANE_P3_INVALID = 20268,
  CORVANE_P4_INVALID = 20269,
  CORVANE_P5_INVALID = 20270,
  CORVANE_NOT_INITIALIZED = 20275,
  CORVANE_NO_LEGACY_DRIVER = 20292 /* slit coefficients asked of an instrument with a motion controller */
};

/* Lengths that callers must allow. */
enum {
  CORVANE_SERIAL_LENGTH = 20,       /* CorvaneGetSerialNumber always writes so many bytes */
  CORVANE_BLAZE_LENGTH = 32,        /* CorvaneGetGratingInfo, terminator included */
  CORVANE_FILTER_INFO_LENGTH = 240, /* CorvaneGetFilterInfo, terminator included */
  CORVANE_DESCRIPTION_LENGTH = 64   /* longest text of CorvaneGetFunctionReturnDescription, terminator included */
};

/* Limits of arguments; the limits themselves are allowed. Offsets, to either side of 0, and slit widths (um). */
enum { CORVANE_MAX_GRATING_OFFSET = 20000, CORVANE_MAX_DETECTOR_OFFSET = 240000 };
#define CORVANE_MIN_SLIT_WIDTH 10.0F
#define CORVANE_MAX_SLIT_WIDTH 2500.0F
#define CORVANE_MAX_WIDE_SLIT_WIDTH 24000.0F /* slits of mode "SLIT-I24" */

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Opening and closing ------------------------------------------------------------------------------------- */

/* Finds and opens all instruments. directory is handed to the camera SDK (libtivan.so) as the place of its
 * configuration files; without that SDK only instruments on USB are found, and null is passed through. May be called
 * again: the search runs anew and the earlier devices are closed.
 * CORVANE_SUCCESS also with no instrument found; CORVANE_NOT_INITIALIZED: the search itself failed. If it was a second
 * one, the earlier instruments are closed, but still counted: their functions answer CORVANE_COMMUNICATION_ERROR.
 * CORVANE_COMMUNICATION_ERROR: an instrument could not be brought to its working state, the library is initialised all
 * the same. Reads each controller's stored record ("SAVEINFO" some 350 times), which takes seconds on real hardware. An
 * older instrument is homed and driven on grating 1 to the angle of its stored wavelength: that wavelength again if the
 * grating in use had as many lines as grating 1, else another. */
CORVANE_API unsigned int CorvaneInitialize(char* directory);

/* Closes all instruments, writing changed records back. Always CORVANE_SUCCESS, also when they could not be written;
 * safe at any time, also in an exit handler. */
CORVANE_API unsigned int CorvaneClose(void);

/* Number of instruments found. CORVANE_P1_INVALID: count is null. */
CORVANE_API unsigned int CorvaneGetNumberDevices(int* count);

/* Copies exactly CORVANE_SERIAL_LENGTH bytes into serial; terminated only when the serial number is shorter.
 * CORVANE_P2_INVALID: serial is null. */
CORVANE_API unsigned int CorvaneGetSerialNumber(int device, char* serial);

/* Text for a status number: "SUCCESS", "COMMUNICATION ERROR", ... At most length - 1 characters (and never more than
 * 63) and a terminator are written. CORVANE_P2_INVALID: text is null; CORVANE_P3_INVALID: length below 1 (nothing
 * written), or the text had to be cut. CORVANE_P4_INVALID, CORVANE_P5_INVALID and CORVANE_NO_LEGACY_DRIVER have no text
 * of their own. Needs no initialisation. */
CORVANE_API unsigned int CorvaneGetFunctionReturnDescription(int code, char* text, int length);

/* ---- Wavelength ---------------------------------------------------------------------------------------------- */

/* Moves the drive so that wavelength (nm) falls on the detector's centre; returns when the move has ended.
 * CORVANE_P2_INVALID: outside CorvaneGetWavelengthLimits of the current grating (the limits themselves are allowed).
 * "MOVETO", or "Step_abs" on instruments whose record asks for stepping by the library. */
CORVANE_API unsigned int CorvaneSetWavelength(int device, float wavelength);

/* Centre wavelength in nm. "POSITION", or the stored value on instruments stepped by the library. Writes 0 when the
 * instrument cannot be asked (CORVANE_COMMUNICATION_ERROR). */
CORVANE_API unsigned int CorvaneGetWavelength(int device, float* wavelength);

/* Moves to zero order, that is to 0 nm. */
CORVANE_API unsigned int CorvaneGotoZeroOrder(int device);

/* 1 when the centre wavelength is exactly 0, else 0. Set to 0 before anything else, whatever the status. */
CORVANE_API unsigned int CorvaneAtZeroOrder(int device, int* atZero);

/* Wavelength range (nm) of a 1-based grating: min 0, max sqrt(3) * 1e6 * cos(angular deviation) / lines per mm.
 * CORVANE_P2_INVALID: no such grating. */
CORVANE_API unsigned int CorvaneGetWavelengthLimits(int device, int grating, float* min, float* max);

/* 1 when the instrument has a wavelength drive. Set to 0 before anything else, whatever the status. */
CORVANE_API unsigned int CorvaneWavelengthIsPresent(int device, int* present);

/* ---- Gratings and turret ------------------------------------------------------------------------------------- */

/* Selects a grating, keeping the wavelength. CORVANE_P2_INVALID: no such grating. "GRATING", or "Step_abs". */
CORVANE_API unsigned int CorvaneSetGrating(int device, int grating);

/* Grating in use, from 1. "GRATING?" once, then remembered; or "Step?" on instruments stepped by the library. */
CORVANE_API unsigned int CorvaneGetGrating(int device, int* grating);

/* Gratings on the active turret, from the instrument's record; on an SX from the controller: "GRATINGS?", remembered
 * for 3 s, so a list asked for just before CorvaneSetTurret may still answer just after it. */
CORVANE_API unsigned int CorvaneGetNumberGratings(int device, int* count);

/* lines: rulings per mm. blaze: text of at most CORVANE_BLAZE_LENGTH bytes with its terminator. home: start position,
 * offset: grating offset, both in steps (stored as floats, cut toward zero). CORVANE_P2_INVALID: no such grating.
 * On an SX lines and blaze are the controller's: "GRATINGS?". */
CORVANE_API unsigned int CorvaneGetGratingInfo(int device, int grating, float* lines, char* blaze, int* home,
                                               int* offset);

/* Homes the wavelength drive: first grating, zero order. "GRATING 1" and "GRATINGHOME", or "Step_abs". */
CORVANE_API unsigned int CorvaneWavelengthReset(int device);

/* The same as CorvaneWavelengthReset. */
CORVANE_API unsigned int CorvaneWavelengthUnsafeReset(int device);

/* Tells the record which turret (1 to 3) is mounted. CORVANE_P2_INVALID: outside 1 to 3. "SAVEINFO"; to
 * an SX "TURRET". A refusal leaves the old one. */
CORVANE_API unsigned int CorvaneSetTurret(int device, int turret);
CORVANE_API unsigned int CorvaneGetTurret(int device, int* turret);

/* Offset of a grating in steps. CORVANE_P2_INVALID: no such grating; CORVANE_P3_INVALID: beyond
 * CORVANE_MAX_GRATING_OFFSET. The drive follows: "POSITION?" and "MOVETO", or steps when the grating is in use. Kept in
 * the record at close; an SX gets all offsets at once, "CONFIG_SYSTEM_DATA". */
CORVANE_API unsigned int CorvaneSetGratingOffset(int device, int grating, int offset);
CORVANE_API unsigned int CorvaneGetGratingOffset(int device, int grating, int* offset);

CORVANE_API unsigned int CorvaneGratingIsPresent(int device, int* present);

/* ---- Detector offsets ---------------------------------------------------------------------------------------- */

/* Offset in steps for the direct ports (entrance 0, exit 0). CORVANE_P2_INVALID: beyond
 * CORVANE_MAX_DETECTOR_OFFSET. */
CORVANE_API unsigned int CorvaneSetDetectorOffset(int device, int offset);
CORVANE_API unsigned int CorvaneGetDetectorOffset(int device, int* offset);

/* The same for the side exit (entrance 0, exit 1). */
CORVANE_API unsigned int CorvaneSetDetectorOffsetPort2(int device, int offset);
CORVANE_API unsigned int CorvaneGetDetectorOffsetPort2(int device, int* offset);

/* The same for any pair of ports (0 or 1 each; others are ignored). CORVANE_P4_INVALID: offset beyond
 * CORVANE_MAX_DETECTOR_OFFSET. Answers CORVANE_SUCCESS even when the instrument could not be reached. */
CORVANE_API unsigned int CorvaneSetDetectorOffsetEx(int device, int entrancePort, int exitPort, int offset);

/* Asks the instrument but never writes offset, and answers CORVANE_SUCCESS even when the instrument could not be
 * reached. Programs rely on neither; use the two functions above to read an offset. */
CORVANE_API unsigned int CorvaneGetDetectorOffsetEx(int device, int entrancePort, int exitPort, int* offset);

/* ---- Slits --------------------------------------------------------------------------------------------------- */

/* Slits 1 to 4: 1 entrance, direct; 2 entrance, side; 3 exit, direct; 4 exit, side. */

/* Opens a slit to a width in micrometres; a motion controller cuts fractions off. An older instrument has slits 1 and
 * 3, which may open less far than they may be asked to (CORVANE_COMMUNICATION_ERROR). CORVANE_P2_INVALID: slit outside
 * 1 to 4; CORVANE_P3_INVALID: width below CORVANE_MIN_SLIT_WIDTH or above CORVANE_MAX_SLIT_WIDTH, on slits of mode
 * "SLIT-I24" CORVANE_MAX_WIDE_SLIT_WIDTH. "SLIT_MODE?" and "SLIT_WIDTH". */
CORVANE_API unsigned int CorvaneSetAutoSlitWidth(int device, int slit, float width);
/* CORVANE_P3_INVALID: width is null. "SLIT_WIDTH?". */
CORVANE_API unsigned int CorvaneGetAutoSlitWidth(int device, int slit, float* width);
/* "SLITHOME". */
CORVANE_API unsigned int CorvaneAutoSlitReset(int device, int slit);
/* present is 0 with CORVANE_SUCCESS where the slit is not fitted. CORVANE_P3_INVALID: present is null. */
CORVANE_API unsigned int CorvaneAutoSlitIsPresent(int device, int slit, int* present);

/* Two points of the width calibration of slit 1 of an older instrument: x in motor steps, y the width in um. The slit
 * moves by new points from the next CorvaneInitialize on; reset it then. CORVANE_P2_INVALID: slit is not 1;
 * CORVANE_NO_LEGACY_DRIVER: the instrument has a motion controller, which keeps its own calibration. Points of the same
 * width are refused (CORVANE_COMMUNICATION_ERROR). */
CORVANE_API unsigned int CorvaneSetAutoSlitCoefficients(int device, int slit, int x1, int y1, int x2, int y2);
CORVANE_API unsigned int CorvaneGetAutoSlitCoefficients(int device, int slit, int* x1, int* y1, int* x2, int* y2);

/* The functions above for slit 1. Arguments are numbered as they stand here: a bad width is CORVANE_P2_INVALID. */
CORVANE_API unsigned int CorvaneSetSlit(int device, float width);
CORVANE_API unsigned int CorvaneGetSlit(int device, float* width);
CORVANE_API unsigned int CorvaneSlitReset(int device);
CORVANE_API unsigned int CorvaneSlitIsPresent(int device, int* present);
CORVANE_API unsigned int CorvaneSetSlitCoefficients(int device, int x1, int y1, int x2, int y2);
CORVANE_API unsigned int CorvaneGetSlitCoefficients(int device, int* x1, int* y1, int* x2, int* y2);

/* The same for slit 3, the exit slit. */
CORVANE_API unsigned int CorvaneSetOutputSlit(int device, float width);
CORVANE_API unsigned int CorvaneGetOutputSlit(int device, float* width);
CORVANE_API unsigned int CorvaneOutputSlitReset(int device);
CORVANE_API unsigned int CorvaneOutputSlitIsPresent(int device, int* present);

/* ---- Flipper mirrors and ports ------------------------------------------------------------------------------- */

/* Flipper mirror 1 is at the entrance, 2 at the exit; port 0 is direct, 1 to the side. CORVANE_P2_INVALID: flipper
 * outside 1 to 2; CORVANE_P3_INVALID: port outside 0 to 1. "PERIPHERAL?" twice, then "ENTRANCEPORT" or "EXITPORT". */
CORVANE_API unsigned int CorvaneSetFlipperMirror(int device, int flipper, int port);
/* CORVANE_P3_INVALID: port is null. */
CORVANE_API unsigned int CorvaneGetFlipperMirror(int device, int flipper, int* port);
/* Ends at port 1, on an older instrument at port 0. */
CORVANE_API unsigned int CorvaneFlipperMirrorReset(int device, int flipper);
/* CORVANE_P3_INVALID: present is null. */
CORVANE_API unsigned int CorvaneFlipperMirrorIsPresent(int device, int flipper, int* present);

/* Wavelength range (nm) that a detector behind an exit port may see. CORVANE_P2_INVALID: port outside 0 to 1;
 * CORVANE_P3_INVALID, CORVANE_P4_INVALID: low, high is null. */
CORVANE_API unsigned int CorvaneGetCCDLimits(int device, int port, float* low, float* high);

/* The functions above for flipper mirror 2, the exit. Arguments are numbered as they stand here. */
CORVANE_API unsigned int CorvaneSetPort(int device, int port);
CORVANE_API unsigned int CorvaneGetPort(int device, int* port);
CORVANE_API unsigned int CorvaneFlipperReset(int device);
CORVANE_API unsigned int CorvaneFlipperIsPresent(int device, int* present);

/* ---- Filter wheel -------------------------------------------------------------------------------------------- */

/* Filters 1 to 6, else CORVANE_P2_INVALID. "PERIPHERAL?", then "FILTER", "FILTER?" or "FILTERHOME". Without a filter
 * wheel an instrument with a motion controller turns nothing, answers filter 1, and all three succeed: ask
 * CorvaneFilterIsPresent. */
CORVANE_API unsigned int CorvaneSetFilter(int device, int filter);
CORVANE_API unsigned int CorvaneGetFilter(int device, int* filter);
CORVANE_API unsigned int CorvaneFilterReset(int device);
/* Label of a filter, from the record: at most CORVANE_FILTER_INFO_LENGTH bytes with its terminator. */
CORVANE_API unsigned int CorvaneGetFilterInfo(int device, int filter, char* info);
/* CORVANE_P3_INVALID: info is null. Goes to the instrument with the record, when it is closed. An SX keeps 239
 * characters and refuses a line end, an LX or MX keeps 10, an older instrument 9. Labels should not end in "OK" or in E
 * and two digits: an SX's reply would end there. */
CORVANE_API unsigned int CorvaneSetFilterInfo(int device, int filter, const char* info);
CORVANE_API unsigned int CorvaneFilterIsPresent(int device, int* present);

/* ---- Shutter ------------------------------------------------------------------------------------------------- */

/* Modes 0 and 1, else CORVANE_P2_INVALID. Instruments with a motion controller have no shutter of this kind. */
CORVANE_API unsigned int CorvaneSetShutter(int device, int mode);
CORVANE_API unsigned int CorvaneGetShutter(int device, int* mode);
CORVANE_API unsigned int CorvaneIsModePossible(int device, int mode, int* possible);
CORVANE_API unsigned int CorvaneShutterIsPresent(int device, int* present);

/* ---- Focus mirror -------------------------------------------------------------------------------------------- */

/* Relative move in steps. CORVANE_P2_INVALID: the target lies below 0 or above the maximum. "PERIPHERAL?" before
 * each of "FOCUS_TOTALSTEPS?", "FOCUS?" and "MOVE_FOCUS".
 * Without a focus mirror an instrument with a motion controller has position 0 and maximum 0, and its reset does
 * nothing, with CORVANE_SUCCESS; so it is while the instrument does not answer which parts it has. A move then answers
 * CORVANE_P2_INVALID, or CORVANE_COMMUNICATION_ERROR where the answer came too late for the travel.
 * The travel is read first. A fitted mirror that does not answer "FOCUS_TOTALSTEPS?" or "FOCUS?" leaves this function
 * as a C++ exception (derived from std::exception), which ends a program that cannot catch it. */
CORVANE_API unsigned int CorvaneSetFocusMirror(int device, int steps);
CORVANE_API unsigned int CorvaneGetFocusMirror(int device, int* position);
CORVANE_API unsigned int CorvaneGetFocusMirrorMaxSteps(int device, int* steps);
CORVANE_API unsigned int CorvaneFocusMirrorReset(int device);
CORVANE_API unsigned int CorvaneFocusMirrorIsPresent(int device, int* present);

/* ---- Accessory lines ----------------------------------------------------------------------------------------- */

/* Lines 1 and 2, else CORVANE_P2_INVALID. state: 1 or more is on. "PORT_INPUT?", "PORT_OUTPUT". Instruments of the SX
 * kind have no accessory port. */
CORVANE_API unsigned int CorvaneSetAccessory(int device, int line, int state);
CORVANE_API unsigned int CorvaneGetAccessoryState(int device, int line, int* state);
CORVANE_API unsigned int CorvaneAccessoryIsPresent(int device, int* present);

/* ---- Optical constants and pixel calibration ----------------------------------------------------------------- */

/* From the instrument's record: focal length in metres, angular deviation and focal-plane tilt in degrees. */
CORVANE_API unsigned int CorvaneEepromGetOpticalParams(int device, float* focalLength, float* angularDeviation,
                                                       float* focalTilt);

/* Pixel width in micrometres and number of pixels along the dispersion. The first device of the list takes both from
 * the camera, if there is one, until they are set here; for the others they are 0 until set. CORVANE_P2_INVALID: width
 * below 1.0, count below 1. */
CORVANE_API unsigned int CorvaneSetPixelWidth(int device, float width);
CORVANE_API unsigned int CorvaneGetPixelWidth(int device, float* width);
CORVANE_API unsigned int CorvaneSetNumberPixels(int device, int count);
CORVANE_API unsigned int CorvaneGetNumberPixels(int device, int* count);

/* Wavelength (nm) of the first count pixels for the present grating and centre wavelength: wavelengths[0] belongs to
 * pixel 1. Writes min(count, number of pixels) values. CORVANE_P2_INVALID: wavelengths is null; CORVANE_P3_INVALID:
 * count below 1. CORVANE_COMMUNICATION_ERROR also when no calibration is possible: pixel width or count not known,
 * zero order, a tilt or angular deviation of exactly 0.
 * The whole detector must lie on one side of zero order. With a centre wavelength below
 *   2e6 / (lines per mm) * cos(angular deviation) * sin(b / 2),  tan b about half the detector's width / focal length,
 * its first pixels lie behind zero order, and the answer is wrong by up to some tens of nanometres, on all pixels, with
 * CORVANE_SUCCESS. That is 15 nm for 1200 lines per mm, 28 mm of detector and 0.75 m, and 271 nm for 150 and 0.33 m. */
CORVANE_API unsigned int CorvaneGetCalibration(int device, float* wavelengths, int count);

/* The cubic behind CorvaneGetCalibration: nm = a + b*p + c*p^2 + d*p^3 for pixel p from 1. CORVANE_P2_INVALID to
 * CORVANE_P5_INVALID: a, b, c, d is null. */
CORVANE_API unsigned int CorvaneGetPixelCalibrationCoefficients(int device, float* a, float* b, float* c, float* d);

#ifdef __cplusplus
}
#endif

/* ---- Four functions under C++ symbols ------------------------------------------------------------------------ */

/* Programs bind to these symbols as they are, so they stay. The labels name them for C and for C++, also where this
 * header is included inside a host's own extern "C". */
#define CORVANE_CXX_SYMBOL(name) __asm__(name)

/* A fixed span of 50 nm to each side of the centre wavelength, on every instrument, whatever grating and detector:
 * not what the detector sees. That is told by CorvaneGetCalibration. */
CORVANE_API unsigned int CorvaneGetDispersion(int device, float* a, float* b)
    CORVANE_CXX_SYMBOL("_Z20CorvaneGetDispersioniPfS_");

/* The same around a given centre wavelength; the detector (index) is not looked at. */
CORVANE_API unsigned int CorvaneGetDispersionFor(int device, float wavelength, float* a, float* b, int index)
    CORVANE_CXX_SYMBOL("_Z23CorvaneGetDispersionForifPfS_i");

/* Reads the shutter's stored values again; see CorvaneSetShutter. */
CORVANE_API unsigned int CorvaneLoadShutterValues(int device) CORVANE_CXX_SYMBOL("_Z24CorvaneLoadShutterValuesi");

/* Tells the library that the shutter was changed from outside. */
CORVANE_API unsigned int CorvaneExternalChange(int device) CORVANE_CXX_SYMBOL("_Z21CorvaneExternalChangei");

#undef CORVANE_CXX_SYMBOL

#endif /* CORVANE_CIF_H */
