// The grating that stored optics are given for. For the conversions into motor steps of both kinds of instruments.
#pragma once

namespace corvane {

/// Lines per mm for which a stored wavelength is the wavelength itself. A grating of L lines counts its wavelengths as
/// nm / kReferenceLines * L, so that one set of coefficients serves all gratings.
inline constexpr float kReferenceLines = 1200.0F;

}  // namespace corvane
