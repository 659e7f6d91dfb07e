#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <memory>

#include "playback/message_reader.h"
#include "playback/speech_frame.h"
#include "tests/playback/message_test_file.h"
#include "video/vdec.h"

namespace {

QString Digest(const std::vector<uint8_t>& bytes) {
    const QByteArray view = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes.data()),
                                                    static_cast<qsizetype>(bytes.size()));
    return QString::fromLatin1(QCryptographicHash::hash(view, QCryptographicHash::Sha256).toHex());
}

// Whole messages, to the last sample and the last pixel.
TEST(SampleMessages, DecodeToTheirDigests) {
    QFile list(SAMPLES_FOLDER "/expected.json");
    ASSERT_TRUE(list.open(QIODevice::ReadOnly));
    const QJsonArray messages = QJsonDocument::fromJson(list.readAll()).array();
    ASSERT_EQ(messages.size(), 2);

    for (const auto& value : messages) {
        const QJsonObject expected = value.toObject();
        SCOPED_TRACE(expected["file"].toString().toStdString());
        const File file(
            std::fopen((SAMPLES_FOLDER "/" + expected["file"].toString()).toUtf8().constData(), "rb"));
        ASSERT_TRUE(file);
        uint8_t rate = 0;
        uint32_t frames = 0;
        ASSERT_EQ(ReadMessageKind(file.get(), rate), MessageHeaderError::None);
        ASSERT_EQ(ReadMessageFrameCount(file.get(), frames), MessageHeaderError::None);
        EXPECT_EQ(rate, expected["rate"].toInt());
        EXPECT_EQ(frames, static_cast<uint32_t>(expected["frame_count"].toInt()));

        vdec_init();
        const gsm decoder = gsm_create();
        std::vector<uint8_t> sound;
        std::vector<uint8_t> picture(kPictureBytes);
        QJsonArray digests;
        MessageReader reader;
        MessageRecord record = reader.Read(file.get());
        for (; record.kind != MessageRecordKind::End; record = reader.Read(file.get())) {
            ASSERT_NE(record.kind, MessageRecordKind::PassedOver);
            if (record.kind == MessageRecordKind::Video) {
                ASSERT_TRUE(vdec_decode(record.body.data(), record.body.size(), picture.data()));
                digests.append(Digest(picture));
                continue;
            }
            for (int i = 0; i < kFramesPerSpeechBlock; ++i) {
                int16_t samples[kSpeechFrameSamples];
                DecodeSpeechFrame(decoder, record.body.data() + static_cast<size_t>(i) * kSpeechFrameBytes,
                                  samples);
                for (const int16_t sample : samples) {
                    sound.push_back(static_cast<uint8_t>(sample));
                    sound.push_back(static_cast<uint8_t>(sample >> 8));
                }
            }
        }
        gsm_destroy(decoder);
        vdec_free();

        EXPECT_EQ(record.end, MessageEnd::Clean);
        EXPECT_EQ(static_cast<int>(sound.size()),
                  2 * kSpeechFrameSamples * expected["speech_frames_decoded"].toInt());
        EXPECT_EQ(Digest(sound).toStdString(), expected["pcm_sha256"].toString().toStdString());
        EXPECT_EQ(digests.size(), expected["pictures"].toInt());
        EXPECT_EQ(QJsonDocument(digests).toJson().toStdString(),
                  QJsonDocument(expected["picture_sha256"].toArray()).toJson().toStdString());
    }
}

}  // namespace
