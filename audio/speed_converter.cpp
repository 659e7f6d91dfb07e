// SPDX-License-Identifier: MIT
#include "audio/speed_converter.h"

#include <sonic.h>

#include <algorithm>

#include "audio/splice.h"

namespace {

// A voice's longest period; the place where two sounds fit is no farther than that.
constexpr int kLongestPeriodsPerSecond = 65;
// How far the stream's input is ahead of what it has made, on average: samples at 8000 a second.
constexpr int kHeldBack = 200;
// So many samples of difference are made good by one per cent of speed.
constexpr double kSamplesPerPercent = 160;
constexpr double kMostPercent = 3;

// libsonic's buffers only ever grow. This much at once is more than a block at any speed.
constexpr int kWarmUpBlocks = 16;

}  // namespace

CSpeedConverter::CSpeedConverter(const CSampleRing& ring, int nBlockLength, int nSampleRate)
    : m_ring(ring),
      m_nBlockLength(nBlockLength),
      m_nSampleRate(nSampleRate),
      m_piece(static_cast<std::size_t>(nBlockLength)),
      m_candidates(static_cast<std::size_t>(nBlockLength + nSampleRate / kLongestPeriodsPerSecond)) {
    m_tail.reserve(static_cast<std::size_t>(nBlockLength));
}

CSpeedConverter::~CSpeedConverter() = default;

void CSpeedConverter::Destroy::operator()(sonicStreamStruct* pStream) const {
    sonicDestroyStream(pStream);
}

bool CSpeedConverter::Prepare() {
    if (m_pStream != nullptr) return true;
    m_pStream.reset(sonicCreateStream(m_nSampleRate, 1));
    if (m_pStream == nullptr) return false;
    std::vector<std::int16_t> silence(static_cast<std::size_t>(kWarmUpBlocks * m_nBlockLength));
    sonicSetSpeed(m_pStream.get(), static_cast<float>(kSpeeds[0]) / kNormalSpeed);
    if (sonicWriteShortToStream(m_pStream.get(), silence.data(), static_cast<int>(silence.size())) == 0)
        m_pStream.reset();
    return m_pStream != nullptr;
}

// Without giving its buffers back.
void CSpeedConverter::EmptyStream() {
    sonicFlushStream(m_pStream.get());
    while (sonicReadShortFromStream(m_pStream.get(), m_piece.data(), m_nBlockLength) > 0) {
    }
}

void CSpeedConverter::Begin(int nSpeed, std::int64_t nFrom, std::span<const std::int16_t> tail) {
    m_nSpeed = nSpeed;
    m_nPosition = nFrom;
    m_nTaken = nFrom;
    m_bPadded = false;
    m_tail.assign(tail.begin(), tail.end());
    if (!tail.empty()) {
        const std::size_t nThere = m_ring.Read(nFrom, m_candidates);
        if (nThere >= tail.size())
            m_nTaken += static_cast<std::int64_t>(BestOffset(tail, std::span(m_candidates).first(nThere)));
    }
    if (nSpeed == kNormalSpeed) return;
    EmptyStream();
    sonicSetSpeed(m_pStream.get(), static_cast<float>(nSpeed) / kNormalSpeed);
}

CSpeedConverter::Block CSpeedConverter::Next(std::span<std::int16_t> to, bool bAll) {
    return m_nSpeed == kNormalSpeed ? Copy(to, bAll) : Convert(to, bAll);
}

CSpeedConverter::Block CSpeedConverter::Copy(std::span<std::int16_t> to, bool bAll) {
    Block block{.nFrom = m_nPosition};
    if (m_ring.End() - m_nTaken < (bAll ? 1 : m_nBlockLength)) return block;
    to = to.first(m_ring.Read(m_nTaken, to.first(static_cast<std::size_t>(m_nBlockLength))));
    FadeInto(to);
    block.nLength = static_cast<int>(to.size());
    m_nTaken += block.nLength;
    block.nSamples = static_cast<int>(m_nTaken - m_nPosition);
    m_nPosition = m_nTaken;
    return block;
}

CSpeedConverter::Block CSpeedConverter::Convert(std::span<std::int16_t> to, bool bAll) {
    // There was more after all.
    if (m_bPadded && !bAll) Begin(m_nSpeed, m_nPosition, {});
    Block block{.nFrom = m_nPosition};
    const std::int64_t nLeft = m_ring.End() - m_nPosition;
    const int nWhole = m_nBlockLength * m_nSpeed / kNormalSpeed;
    if (nLeft < (bAll ? 1 : nWhole)) return block;
    while (sonicSamplesAvailable(m_pStream.get()) < m_nBlockLength)
        if (!Feed(bAll)) return block;
    Steer();

    block.nSamples = SamplesInBlock(m_nBlockLength, m_nSpeed, nLeft);
    block.nLength = block.nSamples == nWhole ? m_nBlockLength : PlayedSamples(block.nSamples, m_nSpeed);
    sonicReadShortFromStream(m_pStream.get(), to.data(), block.nLength);
    FadeInto(to.first(static_cast<std::size_t>(block.nLength)));
    m_nPosition += block.nSamples;
    return block;
}

void CSpeedConverter::FadeInto(std::span<std::int16_t> samples) {
    Crossfade(m_tail, samples);
    m_tail.clear();
}

// Hands a piece of the message to the stream, and silence after its end. False when there is nothing yet.
bool CSpeedConverter::Feed(bool bAll) {
    std::size_t nPiece = m_ring.Read(m_nTaken, m_piece);
    if (nPiece == 0) {
        if (!bAll) return false;
        std::fill(m_piece.begin(), m_piece.end(), std::int16_t{0});
        nPiece = m_piece.size();
        m_bPadded = true;
    }
    m_nTaken += static_cast<std::int64_t>(nPiece);
    return sonicWriteShortToStream(m_pStream.get(), m_piece.data(), static_cast<int>(nPiece)) != 0;
}

void CSpeedConverter::Steer() {
    const double made = static_cast<double>(m_nPosition) +
                        sonicSamplesAvailable(m_pStream.get()) * static_cast<double>(m_nSpeed) / kNormalSpeed;
    const double percent =
        std::clamp((kHeldBack - (static_cast<double>(m_nTaken) - made)) / kSamplesPerPercent, -kMostPercent,
                   kMostPercent);
    sonicSetSpeed(m_pStream.get(), static_cast<float>(m_nSpeed * (100 + percent) / 100 / kNormalSpeed));
}
