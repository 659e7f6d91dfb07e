// SPDX-License-Identifier: MIT
// Turns the samples of a message into the blocks that are played, at any of the speeds, with its pitch kept.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "audio/play_speed.h"
#include "audio/sample_ring.h"

struct sonicStreamStruct;

// Each block but the last has the same length and stands for the same number of the message's samples, so
// that the blocks played tell the place in the message. At normal speed they are those samples, copied.
//
// The speed converter proper, libsonic, cuts out or repeats whole periods of the voice, so what it has made
// is at times a little ahead of or behind its place. The speed that it is set to is corrected by how far, a
// few per cent at most, so that this never adds up.
//
// Only the constructor and Prepare allocate. Not synchronised.
class CSpeedConverter {
public:
    // At normal speed, from sample 0 on. nBlockLength: samples. The ring must outlive the converter, and keep
    // what Position and Begin's nFrom come to.
    CSpeedConverter(const CSampleRing& ring, int nBlockLength, int nSampleRate);
    ~CSpeedConverter();

    // Gets ready for speeds other than normal. False when there is no memory; the first time only.
    bool Prepare();

    // The next block stands for the message from sample nFrom on, at nSpeed, one of kSpeeds. What would have
    // been heard without this call, at most a block, fades into it; empty: nothing would.
    void Begin(int nSpeed, std::int64_t nFrom, std::span<const std::int16_t> tail);

    struct Block {
        std::int64_t nFrom = 0;  // the first sample of the message that it stands for
        int nSamples = 0;        // how many
        int nLength = 0;         // samples to be played; 0: none can be made yet
    };
    // Makes a block. bAll: no more samples come for now, so what is left is wanted however little it is.
    Block Next(std::span<std::int16_t> to, bool bAll);

    int Speed() const { return m_nSpeed; }
    // The first sample of the message that the next block stands for.
    std::int64_t Position() const { return m_nPosition; }

private:
    struct Destroy {
        void operator()(sonicStreamStruct* pStream) const;
    };

    void EmptyStream();
    Block Copy(std::span<std::int16_t> to, bool bAll);
    Block Convert(std::span<std::int16_t> to, bool bAll);
    void FadeInto(std::span<std::int16_t> samples);
    bool Feed(bool bAll);
    void Steer();

    const CSampleRing& m_ring;
    const int m_nBlockLength;
    const int m_nSampleRate;
    std::unique_ptr<sonicStreamStruct, Destroy> m_pStream;
    int m_nSpeed = kNormalSpeed;
    std::int64_t m_nPosition = 0;
    std::int64_t m_nTaken = 0;  // samples up to here are in the stream, or played
    bool m_bPadded = false;     // silence has followed the last of them
    std::vector<std::int16_t> m_piece;
    std::vector<std::int16_t> m_tail;  // still to be faded from; room for one block
    std::vector<std::int16_t> m_candidates;
};
