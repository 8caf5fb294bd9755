// The windowed-sinc routines behind the fa_fir_..._cof functions: they work on a window that is already there.
#pragma once

/// Turns a window of N points into the taps of a low-pass.
/// @param h  holds the window and receives the taps
void DesignLowPass(float* h, int N, float fc);

/// The same for the designs with a centre tap. Each aborts with the message "N&1" when N is even.
void DesignHighPass(float* h, int N, float fc);
void DesignBandPass(float* h, int N, float f1, float f2);
void DesignBandStop(float* h, int N, float f1, float f2);
