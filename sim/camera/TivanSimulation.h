/* Extra entry points of the simulated camera SDK (the simulation's libtivan.so), for tests and demonstrations: look at
 * the simulated instruments behind the I2C bus and disturb its transfers. Plain C; resolve the symbols with dlsym. Not
 * part of a real camera SDK. All may be called from any thread.
 *
 * Instruments are numbered from 0 in the order in which hosts list them: an older instrument first, then the controller
 * at I2C address 0x58. They stay inspectable after "ShutDown", until the next "Initialize" puts new ones in their place
 * (from its state file where the scenario names one, else as the scenario describes it). Functions that return int
 * answer a CorvaneSimAnswer, but for those that say something else. */
#ifndef TIVAN_SIMULATION_H
#define TIVAN_SIMULATION_H

#include <stddef.h> /* NOLINT(modernize-deprecated-headers): C programs include this too */

#ifdef __cplusplus
extern "C" {
#endif

enum CorvaneSimAnswer {
  CORVANE_SIM_DONE = 0,
  /* None was initialised, the scenario attaches none, or it is an older one and has no command lines. */
  CORVANE_SIM_NO_INSTRUMENT = 1,
  /* Any other argument. */
  CORVANE_SIM_OUT_OF_RANGE = 2
};

/* 1 when the last "Initialize" succeeded and no "ShutDown" followed, else 0. */
int CorvaneSimIsInitialized(void);

/* 1 when the instrument keeps its memory and positions in a state file, 0 when it forgets them (or there is none). */
int CorvaneSimKeepsState(int instrument);

/* Instruments that the scenario attaches over USB, for programs with a virtual USB bus; the camera SDK has no part in
 * them. */
int CorvaneSimNumberUsb(void);

/* Wavelength in nm that truly falls on a pixel (from 1, fractions allowed) of the scenario's detector (2048 pixels of
 * 13.5 um where it has none). CORVANE_SIM_OUT_OF_RANGE: no light of any wavelength falls there. */
int CorvaneSimTrueWavelength(int instrument, double pixel, double* nanometres);

/* Wavelength in nm that truly falls on the centre of the detector. Answers as CorvaneSimTrueWavelength. */
int CorvaneSimTrueCentre(int instrument, double* nanometres);

/* One byte of the instrument's memory, address from 1. Of an older instrument the pages lie one behind the other: byte
 * 75 of page 0 has address 76, byte 0 of page 1 address 257. */
int CorvaneSimPeek(int instrument, int address, unsigned char* value);

/* One of the numbered texts of an SX, number from 0; empty for any other. Writes and answers as CorvaneSimLog. */
size_t CorvaneSimParameter(int instrument, int number, char* text, size_t length);

/* Where everything on an instrument really stands, as a JSON object (docs/simulation.md has its keys). Writes and
 * answers as CorvaneSimLog. */
size_t CorvaneSimState(int instrument, char* text, size_t length);

/* With on not 0 the instruments keep their power: every later "Initialize" finds them as they stand, with the faults
 * armed on them, as a host does that starts anew. With 0 the next one puts new ones in their place again. */
void CorvaneSimKeepPower(int on);

/* All protocol lines since the start, as docs/simulation.md shows them ("i2c > MOVETO 550.0000"). Writes at most
 * length - 1 characters and a terminator, and answers how many characters there are in all. */
size_t CorvaneSimLog(char* text, size_t length);

/* Protocol lines that the controller received since "Initialize". */
unsigned long long CorvaneSimLines(int instrument);

/* Calls of the four I2C entry points since the library was loaded. */
unsigned long long CorvaneSimOperations(void);

/* Makes the I2C call number `operation` from now (1: the next one) answer status without reaching the bus; with
 * fromThenOn not 0 every later one too. Replaces an earlier fault; 0 disarms. Survives "Initialize". */
void CorvaneSimArmFault(unsigned long long operation, int fromThenOn, unsigned int status);

/* How many calls the fault armed last has failed. */
unsigned long long CorvaneSimFaultHits(void);

/* Makes replies misbehave, by a JSON text as in the scenario's "faults" list (one object). Counts from now.
 * CORVANE_SIM_OUT_OF_RANGE: the text is not a fault. */
int CorvaneSimArmReplyFault(int instrument, const char* json);

/* Takes away all reply faults of the instrument, those of the scenario too. */
int CorvaneSimClearReplyFaults(int instrument);

#ifdef __cplusplus
}
#endif

#endif /* TIVAN_SIMULATION_H */
