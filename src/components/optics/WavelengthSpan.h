// What both generations of instruments report of their wavelength ranges: arithmetic on stored values, asking nobody.
#pragma once

namespace corvane {

/// The greatest centre wavelength (nm) of a grating: its lines per mm and the instrument's angular deviation in
/// degrees. 0 for a grating without lines.
float GreatestWavelength(float lines, float angularDeviation);

/// The span reported around a centre wavelength (nm): 50 nm to each side, whatever the detector.
void SpanAround(float centre, float& low, float& high);
/// The same span for a window of pixels, cut in steps of 512 pixels, so coarse that most windows answer the whole of
/// it.
void SpanOfWindow(float centre, int first, int last, float& low, float& high);

}  // namespace corvane
