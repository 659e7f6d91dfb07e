#include "playback/reader_thread.h"

#include <array>
#include <vector>

#include "codec/speech_frame.h"
#include "codec/vdec.h"

namespace {

class RecordPlayer {
public:
    explicit RecordPlayer(const ReaderParams& params) : m_params(params), m_picture(kPictureBytes) {}

    // Reads one record and hands on what it holds. FALSE at the end of the message.
    BOOL PlayNext() {
        const MessageRecord record = m_params.pReader->Read(*m_params.ppFile);
        switch (record.kind) {
            case MessageRecordKind::Speech:
                PlaySpeech(record.body.data());
                break;
            case MessageRecordKind::Video:
                // In a message of speech alone the decoder is not ready and the renderer hidden: the picture
                // is skipped like the rest.
                if (vdec_decode(record.body.data(), record.body.size(), m_picture.data()))
                    m_params.pVideo->QueueFrame(m_picture.data());
                break;
            case MessageRecordKind::Skipped:
                break;
            case MessageRecordKind::End:
                m_params.pWaveDevice->EndOfSound();
                return FALSE;
        }
        return TRUE;
    }

private:
    void PlaySpeech(const uint8_t* pBlock) {
        constexpr float kLevelScale = 1.0F / 32768.0F;
        for (int i = 0; i < kFramesPerSpeechBlock; ++i, pBlock += kSpeechFrameBytes) {
            DecodeSpeechFrame(m_params.hSpeech, pBlock, m_samples.data());
            // The level goes first: the block may be heard before this thread goes on.
            if (m_params.pWaveform != nullptr)
                m_params.pWaveform->QueueValue(static_cast<float>(m_samples[0]) * kLevelScale + 1.0F);
            m_params.pWaveDevice->Write(m_samples.data());
        }
    }

    const ReaderParams& m_params;
    std::array<int16_t, kSpeechFrameSamples> m_samples = {};
    std::vector<uint8_t> m_picture;
};

}  // namespace

UINT ReaderThreadProc(LPVOID pParams) {
    const ReaderParams& params = *static_cast<const ReaderParams*>(pParams);
    const auto hasRoom = [&params] {
        return HasRoomForRecord(params.pVideo->GetQueuedCount(), params.pWaveDevice->GetQueuedCount());
    };
    RecordPlayer player(params);
    while (params.pGate->EnterRecord(hasRoom)) {
        const BOOL bMore = player.PlayNext();
        params.pGate->LeaveRecord(!bMore);
        if (!bMore) params.pPanel->PostMessage(WM_READER_ENDED);
    }
    return 0;
}
