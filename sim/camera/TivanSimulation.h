/* Extra entry points of the simulated camera SDK (the simulation's libtivan.so), for tests and demonstrations: look at
 * the simulated instrument behind the I2C bus and disturb its transfers. Plain C; resolve the symbols with dlsym. Not
 * part of a real camera SDK. All may be called from any thread.
 *
 * controller is 0, the one at I2C address 0x58. The instrument stays inspectable after "ShutDown", until the next
 * "Initialize" puts a new one in its place (from its state file where the scenario names one, else as the scenario
 * describes it). Functions that return int answer 0 for success, 1 when there is no such controller (none was
 * initialised, or the scenario attaches none), 2 for any other argument out of range. */
#ifndef TIVAN_SIMULATION_H
#define TIVAN_SIMULATION_H

#include <stddef.h> /* NOLINT(modernize-deprecated-headers): C programs include this too */

#ifdef __cplusplus
extern "C" {
#endif

/* 1 when the last "Initialize" succeeded and no "ShutDown" followed, else 0. */
int CorvaneSimIsInitialized(void);

/* 1 when the instrument keeps its memory and positions in a state file, 0 when it forgets them (or there is none). */
int CorvaneSimKeepsState(int controller);

/* Instruments that the scenario attaches over USB, for programs with a virtual USB bus; the camera SDK has no part in
 * them. */
int CorvaneSimNumberUsb(void);

/* Wavelength in nm that truly falls on a pixel (from 1, fractions allowed) of the scenario's detector (2048 pixels of
 * 13.5 um where it has none). 2: no light of any wavelength falls there. */
int CorvaneSimTrueWavelength(int controller, double pixel, double* nanometres);

/* Wavelength in nm that truly falls on the centre of the detector. 2 as above. */
int CorvaneSimTrueCentre(int controller, double* nanometres);

/* One byte of the instrument's memory, address from 1. */
int CorvaneSimPeek(int controller, int address, unsigned char* value);

/* All protocol lines since the start, as docs/simulation.md shows them ("i2c > MOVETO 550.0000"). Writes at most
 * length - 1 characters and a terminator, and answers how many characters there are in all. */
size_t CorvaneSimLog(char* text, size_t length);

/* Protocol lines that the controller received since "Initialize". */
unsigned long long CorvaneSimLines(int controller);

/* Calls of the four I2C entry points since the library was loaded. */
unsigned long long CorvaneSimOperations(void);

/* Makes the I2C call number `operation` from now (1: the next one) answer status without reaching the bus; with
 * fromThenOn not 0 every later one too. Replaces an earlier fault; 0 disarms. Survives "Initialize". */
void CorvaneSimArmFault(unsigned long long operation, int fromThenOn, unsigned int status);

/* How many calls the fault armed last has failed. */
unsigned long long CorvaneSimFaultHits(void);

/* Makes replies misbehave, by a JSON text as in the scenario's "faults" list (one object). Counts from now. 2: the
 * text is not a fault. */
int CorvaneSimArmReplyFault(int controller, const char* json);

/* Takes away all reply faults of the controller, those of the scenario too. */
int CorvaneSimClearReplyFaults(int controller);

#ifdef __cplusplus
}
#endif

#endif /* TIVAN_SIMULATION_H */
