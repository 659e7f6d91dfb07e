#include "codec/speech_frame.h"

#include <cstring>

namespace {

// A sub-frame is 56 bits: four parameters in 17 bits, then 13 pulses of 3 bits.
constexpr int kSubFrames = 4;
constexpr int kSubFrameBytes = 7;
constexpr int kPulseBits = 39;
constexpr uint64_t kSubFrameMask = (uint64_t{1} << 56) - 1;

// The reflection coefficients are 36 bits before the sub-frames; libgsm's marker nibble makes them five
// bytes.
constexpr int kLarBits = 36;
constexpr uint64_t kLarMask = (uint64_t{1} << kLarBits) - 1;
constexpr uint64_t kGsmMarker = 0xD;
constexpr int kLarWidths[] = {6, 6, 5, 5, 4, 4, 3, 3};
constexpr int kScaleWidths[] = {7, 2, 2, 6};  // lag, gain, grid position, block amplitude

uint64_t LoadLittle(const uint8_t* bytes, int count) {
    uint64_t word = 0;
    for (int i = count - 1; i >= 0; --i) word = word << 8 | bytes[i];
    return word;
}

void StoreLittle(uint64_t word, uint8_t* bytes, int count) {
    for (int i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(word >> (8 * i));
}

uint64_t LoadBig(const uint8_t* bytes, int count) {
    uint64_t word = 0;
    for (int i = 0; i < count; ++i) word = word << 8 | bytes[i];
    return word;
}

void StoreBig(uint64_t word, uint8_t* bytes, int count) {
    for (int i = count - 1; i >= 0; --i, word >>= 8) bytes[i] = static_cast<uint8_t>(word);
}

// Fields taken from the low end of a word, laid down from the high end of the result's `bits` bits; and back.
template <size_t N>
uint64_t LowToHigh(uint64_t word, const int (&widths)[N]) {
    uint64_t result = 0;
    for (const int width : widths) {
        result = result << width | (word & ((uint64_t{1} << width) - 1));
        word >>= width;
    }
    return result;
}

template <size_t N>
uint64_t HighToLow(uint64_t word, const int (&widths)[N]) {
    uint64_t result = 0;
    for (size_t i = N; i-- > 0;) {
        result = result << widths[i] | (word & ((uint64_t{1} << widths[i]) - 1));
        word >>= widths[i];
    }
    return result;
}

// Turns the order of 13 groups of 3 bits around: 16 groups by halves of ever larger size, then the three
// empty ones, which have come to the low end, are shifted out.
uint64_t ReversePulses(uint64_t pulses) {
    pulses = (pulses & 0x1C71C71C71C7) << 3 | (pulses >> 3 & 0x1C71C71C71C7);
    pulses = (pulses & 0x03F03F03F03F) << 6 | (pulses >> 6 & 0x03F03F03F03F);
    pulses = (pulses & 0x000FFF000FFF) << 12 | (pulses >> 12 & 0x000FFF000FFF);
    pulses = (pulses & 0x000000FFFFFF) << 24 | pulses >> 24;
    return pulses >> 9;
}

}  // namespace

void RepackSpeechFrameForGsm(const uint8_t* frame, gsm_byte* gsm_layout) {
    const uint64_t lars = LowToHigh(LoadLittle(frame, 5) & kLarMask, kLarWidths);
    StoreBig(kGsmMarker << kLarBits | lars, gsm_layout, 5);
    // Sub-frames start in the middle of a byte here and at a byte there.
    for (int j = 0; j < kSubFrames; ++j) {
        const uint64_t word = LoadLittle(frame + 4 + kSubFrameBytes * j, 8) >> 4 & kSubFrameMask;
        const uint64_t scale = LowToHigh(word, kScaleWidths);
        StoreBig(scale << kPulseBits | ReversePulses(word >> 17), gsm_layout + 5 + kSubFrameBytes * j,
                 kSubFrameBytes);
    }
}

void RepackSpeechFrameFromGsm(const gsm_byte* gsm_layout, uint8_t* frame) {
    uint64_t pending = HighToLow(LoadBig(gsm_layout, 5) & kLarMask, kLarWidths);
    StoreLittle(pending, frame, 4);
    pending >>= 32;
    for (int j = 0; j < kSubFrames; ++j) {
        const uint64_t word = LoadBig(gsm_layout + 5 + kSubFrameBytes * j, kSubFrameBytes);
        const uint64_t pulses = ReversePulses(word & ((uint64_t{1} << kPulseBits) - 1));
        const uint64_t sub_frame = pulses << 17 | HighToLow(word >> kPulseBits, kScaleWidths);
        StoreLittle(sub_frame << 4 | pending, frame + 4 + kSubFrameBytes * j, kSubFrameBytes);
        pending = sub_frame >> 52;
    }
    frame[kSpeechFrameBytes - 1] = static_cast<uint8_t>(pending);
}

void DecodeSpeechFrame(gsm decoder, const uint8_t* frame, int16_t* samples) {
    gsm_frame gsm_layout;
    RepackSpeechFrameForGsm(frame, gsm_layout);
    // It fails only on a missing marker.
    gsm_decode(decoder, gsm_layout, samples);
}
