// The volume dialog on a sound server of the test's own; pactl is the other program.
#include <QSlider>
#include <QTest>
#include <optional>

#include "platform/qt/toolkit.h"
#include "platform/sound/mixer_driver.h"
#include "platform/sound/system_sound.h"
#include "platform/sound/wave_driver.h"
#include "res/resource.h"
#include "tests/sound/private_server.h"
#include "tests/support/ui_test.h"
#include "tests/support/watch.h"
#include "volume/volume_dlg.h"

namespace {

using ui_test::PumpUntil;
using watch::Clock;

bool Says(const std::vector<std::string>& words, const std::string& part) {
    return Pactl(words).find(part) != std::string::npos;
}

class VolumeOnServer : public testing::Test {
protected:
    VolumeOnServer() {
        PrivateServer::UsePrivateFolders();
        PrivateServer::ForgetVolumes();
        m_server.emplace();
        Pactl({"set-sink-mute", "test", "1"});
        Pactl({"set-sink-volume", "test", "40%"});
        UseSystemSound();
        m_dlg.emplace(&m_parent);
        m_dlg->Create();
        m_dlg->Show();
        ui_test::Pump();
    }
    ~VolumeOnServer() override {
        m_dlg.reset();
        SetMixerDriver(nullptr);
        SetWaveDriver(nullptr);
    }

    CSliderCtrl& Master() { return *static_cast<CSliderCtrl*>(m_dlg->GetDlgItem(IDC_MASTER_VOLUME)); }
    void Press(Qt::Key key) { QTest::keyClick(WidgetOf(Master().m_hWnd), key); }

    std::optional<PrivateServer> m_server;
    ui_test::HostDialog m_parent{IDD_PLAYER_DIALOG};
    std::optional<CVolumeDlg> m_dlg;
};

TEST_F(VolumeOnServer, MovesWithAndMovesTheServer) {
    EXPECT_TRUE(PumpUntil([] { return Says({"get-sink-mute", "test"}, "no"); }));
    EXPECT_GT(Master().GetPos(), 0);

    double worst = 0;
    for (const char* volume : {"80%", "10%", "100%", "55%"}) {
        const int before = Master().GetPos();
        Pactl({"set-sink-volume", "test", volume});
        const auto set = Clock::now();
        EXPECT_TRUE(PumpUntil([&] { return Master().GetPos() != before; }));
        worst = std::max(worst, watch::Ms(Clock::now() - set));
    }
    std::printf("the slider follows within %.1f ms\n", worst);
    EXPECT_LT(worst, 250);

    Press(Qt::Key_Home);
    EXPECT_TRUE(PumpUntil([] { return Says({"get-sink-volume", "test"}, " 100%"); }));
    Press(Qt::Key_End);
    EXPECT_TRUE(PumpUntil([] { return Says({"get-sink-volume", "test"}, " 0%"); }));
    Pactl({"set-sink-mute", "test", "1"});
    auto& box = *static_cast<CButton*>(m_dlg->GetDlgItem(IDC_MASTER_MUTE));
    EXPECT_TRUE(PumpUntil([&] { return box.GetCheck() == 1; }));
}

TEST_F(VolumeOnServer, WithTheServerGoneItStaysQuietAndAnswers) {
    m_server->Kill();
    ui_test::PumpFor(300);
    const auto begin = Clock::now();
    Press(Qt::Key_PageUp);
    m_dlg->Hide();
    m_dlg->Show();
    m_dlg.reset();
    EXPECT_LT(watch::Ms(Clock::now() - begin), 1000);
}

}  // namespace
