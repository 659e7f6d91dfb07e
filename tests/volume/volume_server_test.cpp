// The volume dialog on a sound server of the test's own; pactl is the other program.
#include <QApplication>
#include <QSlider>
#include <QTest>
#include <chrono>
#include <cmath>
#include <optional>

#include "platform/sound/mixer_driver.h"
#include "platform/sound/system_sound.h"
#include "res/resource.h"
#include "tests/app/app_test.h"
#include "tests/sound/private_server.h"
#include "volume/volume_dlg.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

bool Eventually(const std::function<bool()>& holds, milliseconds within) {
    const auto deadline = Clock::now() + within;
    while (!holds()) {
        if (Clock::now() > deadline) return false;
        QTest::qWait(1);
    }
    return true;
}

bool Says(const std::vector<std::string>& words, const std::string& part) {
    return RunProgram(words).find(part) != std::string::npos;
}

class VolumeOnServer : public testing::Test {
protected:
    VolumeOnServer() {
        PrivateServer::UsePrivateFolders();
        PrivateServer::ForgetVolumes();
        m_server.emplace();
        RunProgram({"pactl", "set-sink-mute", "test", "1"});
        RunProgram({"pactl", "set-sink-volume", "test", "40%"});
        UseSystemSound();
        m_parent.Create(IDD_PLAYER_DIALOG);
        m_dlg.emplace(&m_parent);
        m_dlg->Create();
        m_dlg->Show();
        app_test::Pump();
    }
    ~VolumeOnServer() override {
        m_dlg.reset();
        SetMixerDriver(nullptr);
        SetWaveDriver(nullptr);
    }

    int Position(int id) { return static_cast<CSliderCtrl*>(m_dlg->GetDlgItem(id))->GetPos(); }
    QSlider* Master() {
        for (QWidget* widget : QApplication::allWidgets()) {
            auto* slider = qobject_cast<QSlider*>(widget);
            if (slider != nullptr && slider->isVisible() &&
                slider->value() == 65535 - Position(IDC_MASTER_VOLUME))
                return slider;
        }
        return nullptr;
    }
    int LitSegments() {
        CWnd* meter = m_dlg->GetDlgItem(IDC_LEVEL_METER);
        meter->UpdateWindow();
        CRect rect;
        meter->GetClientRect(rect);
        const CClientDC dc(meter);
        const int height = rect.Height() / 10;
        int lit = 0;
        for (int i = 0; i < 10; ++i) lit += dc.GetPixel(1, i * height) != RGB(0xC0, 0xC0, 0xC0) ? 1 : 0;
        return lit;
    }

    std::optional<PrivateServer> m_server;
    CDialog m_parent;
    std::optional<CVolumeDlg> m_dlg;
};

TEST_F(VolumeOnServer, MovesWithAndMovesTheServer) {
    EXPECT_TRUE(Eventually(
        [] {
            return Says({"pactl", "get-sink-mute", "test"}, "no");
        },
        milliseconds(2000)));
    const int at_start = Position(IDC_MASTER_VOLUME);
    EXPECT_GT(at_start, 0);

    double worst = 0;
    for (const char* volume : {"80%", "10%", "100%", "55%"}) {
        const int before = Position(IDC_MASTER_VOLUME);
        RunProgram({"pactl", "set-sink-volume", "test", volume});
        const auto set = Clock::now();
        EXPECT_TRUE(Eventually([&] { return Position(IDC_MASTER_VOLUME) != before; }, milliseconds(2000)));
        worst = std::max(worst, std::chrono::duration<double, std::milli>(Clock::now() - set).count());
    }
    EXPECT_LT(worst, 100.0) << "milliseconds until the slider has followed";
    RecordProperty("slider_follows_ms", std::to_string(worst));

    QSlider* master = Master();
    ASSERT_NE(master, nullptr);
    const struct {
        Qt::Key key;
        const char* volume;
    } keys[] = {{Qt::Key_Home, " 100%"}, {Qt::Key_End, " 0%"}};
    for (const auto& [key, volume] : keys) {
        QTest::keyClick(master, key);
        EXPECT_TRUE(Eventually(
            [&] {
                return Says({"pactl", "get-sink-volume", "test"}, volume);
            },
            milliseconds(2000)))
            << volume;
    }
    RunProgram({"pactl", "set-sink-mute", "test", "1"});
    auto& box = *static_cast<CButton*>(m_dlg->GetDlgItem(IDC_MASTER_MUTE));
    EXPECT_TRUE(Eventually([&] { return box.GetCheck() == 1; }, milliseconds(2000)));
}

TEST_F(VolumeOnServer, TheMeterFollowsAToneAndFallsToNothing) {
    WAVEFORMATEX format{WAVE_FORMAT_PCM, 1, 8000, 16000, 2, 16, 0};
    HWAVEOUT output = nullptr;
    ASSERT_EQ(waveOutOpen(&output, WAVE_MAPPER, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
    std::vector<std::int16_t> tone(3 * 8000);
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] = static_cast<std::int16_t>(std::lround(18000 * std::sin(0.5 * static_cast<double>(i))));
    WAVEHDR header{};
    header.lpData = reinterpret_cast<char*>(tone.data());
    header.dwBufferLength = static_cast<DWORD>(tone.size() * 2);
    ASSERT_EQ(waveOutPrepareHeader(output, &header, sizeof header), MMSYSERR_NOERROR);
    EXPECT_EQ(LitSegments(), 0);
    ASSERT_EQ(waveOutWrite(output, &header, sizeof header), MMSYSERR_NOERROR);
    // 18000 of 32768 is 5 of 10 segments; the one more that is lit lies below the tenth.
    EXPECT_TRUE(Eventually([&] { return LitSegments() == 5; }, milliseconds(2000))) << LitSegments();
    EXPECT_TRUE(Eventually([&] { return (header.dwFlags & WHDR_DONE) != 0; }, milliseconds(6000)));
    EXPECT_TRUE(Eventually([&] { return LitSegments() == 0; }, milliseconds(1000)));
    waveOutReset(output);
    waveOutClose(output);
}

TEST_F(VolumeOnServer, WithTheServerGoneItStaysQuietAndAnswers) {
    m_server->Kill();
    const auto begin = Clock::now();
    QTest::qWait(300);
    QSlider* master = Master();
    ASSERT_NE(master, nullptr);
    QTest::keyClick(master, Qt::Key_PageUp);
    m_dlg->Hide();
    m_dlg->Show();
    EXPECT_LT(Clock::now() - begin, milliseconds(600));
    m_dlg.reset();
    EXPECT_LT(Clock::now() - begin, milliseconds(1200));
}

}  // namespace
