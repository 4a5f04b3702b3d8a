// Elementary functions of our own. The C library picks its variants by the processor and promises no
// bits across machines; these are plain double arithmetic, so the same input gives the same output on
// any build. Errors are a few units in the last place of a double; callers round to float.
#pragma once

namespace synth::math {

inline constexpr double pi = 3.14159265358979323846;
inline constexpr double ln2 = 0.69314718055994530942;

// 2^x; 0 below -1022, infinity from 1024 on, NaN for NaN.
double exp2(double x);
// log2(x) for x > 0; -infinity at 0, NaN below.
double log2(double x);
double exp(double x);
double log(double x);
double log10(double x);
// x^y for x > 0; 0 for x = 0 and y > 0.
double pow(double x, double y);
double tanh(double x);

// Angles in radians; accurate to magnitudes of about 1e6, NaN from 1e9 on.
double sin(double x);
double cos(double x);
double tan(double x);

// The angle of the point (x, y), -pi..pi; 0 at the origin.
double atan2(double y, double x);

inline float exp2(float x) { return float(exp2(double(x))); }
inline float log2(float x) { return float(log2(double(x))); }
inline float exp(float x) { return float(exp(double(x))); }
inline float pow(float x, float y) { return float(pow(double(x), double(y))); }
inline float sin(float x) { return float(sin(double(x))); }
inline float cos(float x) { return float(cos(double(x))); }
inline float tan(float x) { return float(tan(double(x))); }

// A level in dB as a factor on amplitude.
inline double fromDb(double db) { return exp2(db * 0.16609640474436811739); }

}  // namespace synth::math
