// FIR design, block filtering and sample-rate conversion for 16-bit audio.
//
// Frequencies are fractions of the Nyquist frequency: 1.0 is half the sample rate. Transition widths are in that unit
// too. The formulas are those of A. V. Oppenheim, R. W. Schafer, "Discrete-Time Signal Processing", chapter 7.
// Every function may be called on any thread; a handle belongs to one thread at a time.
#pragma once

#include <cstdint>

enum { // window numbers of the designs; any other number is taken as Hamming
    kFaHamming = 0,
    kFaBlackman = 1,
    kFaKaiser = 2, // beta 8.96
};

constexpr uintptr_t kFaRefused = UINTPTR_MAX; // (uintptr_t)-1, the handle of what could not be created

/// Converts a block of PCM to another rate by linear interpolation, without filtering.
///
/// Blocks do not depend on each other: positions at or after the last input sample hold that sample. Positions and
/// interpolation are in single precision, and the result is truncated, so that it is the same on every machine.
///
/// @param in        inCount samples; with none nothing is done
/// @param inRate    serves only to tell whether it equals outRate
/// @param out       receives outCount samples; at equal rates the inCount ones of in, whatever outCount is
/// @param step      distance between output samples in input samples, not negative
void resampleData(const short* in, int inRate, int inCount, short* out, int outRate, int outCount, float step);

/// Windows of N points, symmetric about their middle; a window of one point is 1.
/// @param w  receives N values
/// @return   N
int fa_hamming(float* w, int N);
int fa_blackman(float* w, int N);
int fa_kaiser(float* w, int N); // beta 8.96, about 90 dB
int fa_kaiser_beta(float* w, int N, float beta);

/// @param atten  stop-band attenuation in dB
/// @return       the beta of the Kaiser window that reaches it
float fa_kaiser_atten2beta(float atten);

/// Estimates the taps that a design needs, truncated to an integer.
/// @param tw     transition width, above 0
/// @param atten  stop-band attenuation in dB
int fa_hamming_cof_num(float tw);
int fa_blackman_cof_num(float tw);
int fa_kaiser_cof_num(float tw, float atten);

/// Windowed-sinc designs with linear phase and unit gain in the pass-band.
///
/// @param h       receives an array from malloc(3), which the caller releases with free(3); null when there are no taps
/// @param N       taps; all but the low-pass need an odd number and raise an even one by one
/// @param window  kFaHamming, kFaBlackman or kFaKaiser
/// @param fc      cut-off frequency; f1 and f2 are the lower and the upper edge of a band
/// @return        taps of the design, 0 when N is below 1 or memory ran out
int fa_fir_lpf_cof(float** h, int N, int window, float fc);
int fa_fir_hpf_cof(float** h, int N, int window, float fc);
int fa_fir_bandpass_cof(float** h, int N, int window, float f1, float f2);
int fa_fir_bandstop_cof(float** h, int N, int window, float f1, float f2);

/// Convolves x with h.
/// @param y  receives nx + nh - 1 values; must not overlap x or h
/// @return   nx + nh - 1; 0 when nx or nh is below 1
int fa_conv(const float* x, int nx, const float* h, int nh, float* y);

/// Creates a filter for a stream that comes in frames.
///
/// @param frame_len  longest frame in samples, at least 1
/// @param fir_len    taps, raised as by the designs
/// @return           handle, to be released with fa_fir_filter_uninit; kFaRefused for lengths below 1 or without memory
uintptr_t fa_fir_filter_lpf_init(int frame_len, int fir_len, float fc, int window);
uintptr_t fa_fir_filter_hpf_init(int frame_len, int fir_len, float fc, int window);
uintptr_t fa_fir_filter_bandpass_init(int frame_len, int fir_len, float f1, float f2, int window);
uintptr_t fa_fir_filter_bandstop_init(int frame_len, int fir_len, float f1, float f2, int window);

/// Releases a filter; 0 and kFaRefused are allowed.
void fa_fir_filter_uninit(uintptr_t handle);

/// Filters the next frame of the stream. The output is that of fa_conv over all frames together.
///
/// Aborts with the message "frame_len <= flt->frame_len" when the frame is longer than the filter was created for.
/// @param in   frame_len samples
/// @param out  receives frame_len samples; may be in
/// @return     frame_len; 0 when it is below 1
int fa_fir_filter(uintptr_t handle, const float* in, float* out, int frame_len);

/// Ends the stream: gives the samples that are still in the filter and clears it for another stream.
/// @param out  receives taps - 1 samples
/// @return     taps - 1
int fa_fir_filter_flush(uintptr_t handle, float* out);

/// Creates a resampler for 16-bit mono PCM in host byte order that changes the rate by up / down, low-pass filtered.
///
/// @param up, down       output rate and input rate, or any pair in their ratio; reduced by their common divisor
/// @param design         window of the low-pass: kFaHamming, kFaBlackman or kFaKaiser
/// @param frameLenBytes  longest input frame in bytes, at least 2
/// @param gain           factor on the signal
/// @return               handle, to be released with fa_resample_filter_uninit; kFaRefused when a value is below 1, the
///                       rates differ by more than 16 times, the reduced factors exceed 192000, or memory ran out
uintptr_t fa_resample_filter_init(int up, int down, int design, int frameLenBytes, float gain);

/// Releases a resampler; 0 and kFaRefused are allowed.
void fa_resample_filter_uninit(uintptr_t handle);

/// Resamples the next frame of the stream. Frames join without a seam.
///
/// @param in        inBytes bytes, at most a frame; an odd byte at the end is left out
/// @param out       receives at most the input frame times up / down, rounded up to a whole sample
/// @param outBytes  receives the number of bytes written
/// @return          0, or -1 when the frame is too long or inBytes negative; nothing is written then
int fa_resample(uintptr_t handle, const unsigned char* in, int inBytes, unsigned char* out, int* outBytes);

/// @return  longest input frame in bytes; 0 without a handle
int fa_get_resample_framelen_bytes(uintptr_t handle);
