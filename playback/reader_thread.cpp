// SPDX-License-Identifier: MIT
#include "playback/reader_thread.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "audio/wave_device.h"
#include "codec/speech_frame.h"
#include "codec/vdec.h"
#include "controls/waveform_wnd.h"
#include "video/video_wnd.h"

namespace {

using Turn = CReaderGate::Turn;
using Need = CReaderGate::Need;
using Clock = std::chrono::steady_clock;

// Stray bytes are looked through in pieces of this size, and nine times as long as a piece took is rested.
constexpr int kStrayPiece = 1 << 16;
constexpr int kStrayRest = 9;

constexpr float kLevelScale = 1.0F / 32768.0F;
constexpr float kSilentLevel = 1.0F;

class CReader {
public:
    explicit CReader(MessageSource& source) : m_source(source) {}

    void Run() {
        for (;;) {
            Turn turn = m_source.gate.AwaitRun();
            if (turn == Turn::GoOn) turn = PlayNext();
            if (turn == Turn::End) return;
            if (turn == Turn::Move) TakeMove();
        }
    }

private:
    void TakeMove() {
        m_plan = m_source.gate.TakeMove(m_nMove);
        m_clock = m_plan.clock;
        m_nNextFrame = m_plan.nTarget;
        m_bSeek = TRUE;
        m_bShowNext = m_plan.bShowFirst;
        m_nTrace = 0;
        m_end = MessageEnd::None;
        m_bFilledEnd = FALSE;
    }

    // Reads one record and hands on what it holds.
    Turn PlayNext() {
        const Clock::time_point from = Clock::now();
        if (const Turn turn = m_source.gate.BeginReading(); turn != Turn::GoOn) return turn;
        if (m_end != MessageEnd::None && !HasGrown()) return PlayEnd();
        const BOOL bGoesOn = m_end != MessageEnd::None;
        const MessageRecord record = ReadRecord();
        if (const Turn turn = m_source.gate.BeginWork(); turn != Turn::GoOn) return turn;
        if (bGoesOn && record.kind != MessageRecordKind::End) {
            if (const Turn turn = PassGoingOn(); turn != Turn::GoOn) return turn;
        }
        switch (record.kind) {
            case MessageRecordKind::Speech:
                return PlaySpeech(record.body.data());
            case MessageRecordKind::Video:
                return PlayPicture(record.body);
            case MessageRecordKind::Skipped:
                return m_source.gate.Rest(std::chrono::duration_cast<std::chrono::milliseconds>(
                    kStrayRest * (Clock::now() - from)));
            case MessageRecordKind::End:
                m_end = record.end;
                return Turn::GoOn;
        }
        return Turn::GoOn;
    }

    // A record, the end, or so many bytes that are none.
    MessageRecord ReadRecord() {
        if (m_bSeek) m_records.Seek(m_source.pFile, m_plan.nOffset);
        m_bSeek = FALSE;
        MessageRecord record;
        int nStray = 0;
        do record = m_records.Read(m_source.pFile);
        while (record.kind == MessageRecordKind::Skipped && ++nStray < kStrayPiece);
        return record;
    }

    Turn PlaySpeech(const uint8_t* pBlock) {
        int64_t nFrame = m_clock.NextSpeechFrame();
        m_clock.AddSpeechBlock();
        if (m_bFilledEnd && nFrame < m_nNextFrame) return PassLateSpeech();
        if (const Turn turn = FillTo(nFrame); turn != Turn::GoOn) return turn;
        if (const Turn turn = m_source.gate.BeginWork(); turn != Turn::GoOn) return turn;
        if (m_plan.bNewDecoder) RenewDecoder();

        int nHeard = 0;
        for (int i = 0; i < kFramesPerSpeechBlock; ++i, ++nFrame, pBlock += kSpeechFrameBytes) {
            if (nFrame < m_plan.nDecodeFrom) continue;
            int16_t* pSamples = m_samples.data() + nHeard * kSpeechFrameSamples;
            DecodeSpeechFrame(m_source.hSpeech, pBlock, pSamples);
            const float fLevel = static_cast<float>(pSamples[0]) * kLevelScale + 1.0F;
            if (nFrame >= m_nNextFrame) {
                m_levels[static_cast<size_t>(nHeard++)] = fLevel;
            } else if (nFrame >= m_plan.nTraceFrom && m_nTrace < m_trace.size()) {
                m_trace[m_nTrace++] = fLevel;
            }
        }
        return nHeard == 0 ? Turn::GoOn : PassBlocks(m_samples.data(), nHeard);
    }

    Turn PlayPicture(std::span<const uint8_t> body) {
        const int64_t nNumber = m_clock.Pictures();
        m_clock.AddPicture();
        if (const Turn turn = FillTo(m_clock.NextSpeechFrame()); turn != Turn::GoOn) return turn;
        if (nNumber < m_plan.nFirstPicture) return Turn::GoOn;

        CVideoWnd& video = *m_source.outputs.pVideo;
        constexpr Need kOnePicture = {.nPictures = 1};
        BYTE* pFrame = nullptr;
        Turn turn = Pass(kOnePicture, [&] { pFrame = video.GetFreeFrame(); });
        if (turn != Turn::GoOn || pFrame == nullptr) return turn;
        if (turn = m_source.gate.BeginWork(); turn != Turn::GoOn) return turn;
        // In a message of speech alone the decoder is not ready and the renderer hidden: the picture is
        // skipped like the rest.
        if (vdec_decode(body.data(), body.size(), pFrame) == FALSE) return Turn::GoOn;
        turn = Pass(kOnePicture, [&] { video.QueueFrame(static_cast<int>(nNumber)); });
        if (turn != Turn::GoOn) return turn;
        if (turn = m_source.gate.BeginWork(); turn != Turn::GoOn) return turn;
        if (std::exchange(m_bShowNext, FALSE))
            video.ShowNextFrame();
        else
            video.ShowLate();
        return Turn::GoOn;
    }

    // Silence up to a frame.
    Turn FillTo(int64_t nFrame) {
        while (m_nNextFrame < nFrame)
            if (const Turn turn = PassSilence(nFrame); turn != Turn::GoOn) return turn;
        return Turn::GoOn;
    }

    // A block's time of it at most.
    Turn PassSilence(int64_t nUpTo) {
        m_levels.fill(kSilentLevel);
        return PassBlocks(nullptr,
                          static_cast<int>(std::min<int64_t>(nUpTo - m_nNextFrame, kFramesPerSpeechBlock)));
    }

    // pSamples: of so many blocks; null stands for silence.
    Turn PassBlocks(const int16_t* pSamples, int nBlocks) {
        m_nNextFrame += nBlocks;
        return Pass({.nBlocks = nBlocks}, [this, pSamples, nBlocks] {
            MessageOutputs& outputs = m_source.outputs;
            if (m_nTrace != 0) PassTrace();
            if (!outputs.bSound) outputs.noSound.Take(nBlocks, Clock::now());
            for (int i = 0; i < nBlocks; ++i) {
                // The level goes first: the block may be heard before this thread goes on.
                if (outputs.pWaveform != nullptr)
                    outputs.pWaveform->QueueValue(m_levels[static_cast<size_t>(i)]);
                outputs.pWaveDevice->Write(pSamples == nullptr ? m_silence.data()
                                                               : pSamples + i * kSpeechFrameSamples);
            }
        });
    }

    // Before the first block, so that the levels are drawn before one is heard.
    void PassTrace() {
        std::copy_n(m_trace.begin(), m_nTrace, m_source.trace.begin());
        m_source.nTrace = static_cast<int>(m_nTrace);
        m_nTrace = 0;
        PostMessage(m_source.outputs.hPanel, WM_TRACE_READ, m_nMove, 0);
    }

    // Silence as long as pictures outlast the sound. The file is looked at after each piece of it.
    Turn PlayEnd() {
        if (m_nNextFrame >= m_clock.Length()) return PassEnd();
        m_bFilledEnd = TRUE;
        return PassSilence(m_clock.Length());
    }

    Turn PassEnd() {
        return Pass({}, [this] {
            m_source.outputs.pWaveDevice->EndOfSound();
            m_source.gate.StopRunning();
            PostMessage(m_source.outputs.hPanel, WM_READER_ENDED, m_nMove, static_cast<LPARAM>(m_end));
        });
    }

    Turn PassGoingOn() {
        m_end = MessageEnd::None;
        return Pass({}, [this] { PostMessage(m_source.outputs.hPanel, WM_READER_GOES_ON, m_nMove, 0); });
    }

    // The panel goes to where it is, and this block comes again.
    Turn PassLateSpeech() {
        m_bFilledEnd = FALSE;
        return Pass({}, [this] { PostMessage(m_source.outputs.hPanel, WM_LATE_SPEECH, m_nMove, 0); });
    }

    template <class HandOver>
    Turn Pass(Need need, HandOver handOver) {
        MessageOutputs& outputs = m_source.outputs;
        return m_source.gate.Pass(
            need, !outputs.bSound, [&outputs](Need n) { return outputs.HaveRoom(n); }, handOver);
    }

    // Whether there may be something behind the end that was met; the stream then goes back to it.
    BOOL HasGrown() {
        struct stat info = {};
        const int nDescriptor = fileno(m_source.pFile);
        if (nDescriptor < 0 || fstat(nDescriptor, &info) != 0 || info.st_size <= m_nSizeAtEnd) return FALSE;
        m_nSizeAtEnd = info.st_size;
        return m_records.Resume(m_source.pFile);
    }

    void RenewDecoder() {
        m_plan.bNewDecoder = false;
        gsm hNew = gsm_create();
        if (hNew == nullptr) return;
        gsm_destroy(m_source.hSpeech);
        m_source.hSpeech = hNew;
    }

    MessageSource& m_source;
    MessageReader m_records;
    SeekPlan m_plan;
    unsigned m_nMove = 0;
    MessageClock m_clock;      // all records read
    int64_t m_nNextFrame = 0;  // the next block handed over sounds in this frame
    int64_t m_nSizeAtEnd = 0;  // of the file, when it was last looked whether that has grown
    BOOL m_bSeek = FALSE;      // the stream has still to go to the plan's offset
    BOOL m_bShowNext = FALSE;  // the next picture is shown at once
    MessageEnd m_end = MessageEnd::None;
    BOOL m_bFilledEnd = FALSE;  // silence has been handed over that the message ended with
    std::array<int16_t, kSpeechFrameSamples* kFramesPerSpeechBlock> m_samples = {};
    std::array<int16_t, kSpeechFrameSamples> m_silence = {};
    std::array<float, kFramesPerSpeechBlock> m_levels = {};
    MessageTrace m_trace = {};  // levels before the target, to be handed over with its first block
    size_t m_nTrace = 0;
};

}  // namespace

UINT ReaderThreadProc(LPVOID pParams) {
    const std::unique_ptr<std::shared_ptr<MessageSource>> pSource(
        static_cast<std::shared_ptr<MessageSource>*>(pParams));
    CReader(**pSource).Run();
    return 0;
}
