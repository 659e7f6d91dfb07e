#include "tests/app/app_test.h"

#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QTimer>
#include <algorithm>
#include <cstdlib>

#include "platform/sound/simulated_mixer_driver.h"
#include "res/player_resources.h"

namespace app_test {

void Pump() {
    for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
}

std::string Sample(const std::string& name) {
    return std::string(TRV_SAMPLES) + "/" + name;
}

Modal WithModal(const std::function<void()>& action, const std::function<void(const Modal&)>& underIt) {
    Modal modal;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        QWidget* widget = QApplication::activeModalWidget();
        if (widget == nullptr) return;
        look.stop();
        modal.title = widget->windowTitle().toStdString();
        if (const auto* box = qobject_cast<QMessageBox*>(widget)) modal.text = box->text().toStdString();
        modal.close = [widget] { widget->close(); };
        if (underIt) {
            underIt(modal);
        } else {
            modal.close();
        }
    });
    look.start(1);
    action();
    EXPECT_TRUE(modal.close) << "no modal window came up";
    return modal;
}

bool HasControlNamed(const std::string& name) {
    const auto widgets = QApplication::allWidgets();
    return std::any_of(widgets.begin(), widgets.end(),
                       [&](const QWidget* widget) { return widget->accessibleName().toStdString() == name; });
}

void PlayerTest::SetUp() {
    // The main window of the test before has ended the message loop: only a loop that was run is over that.
    QTimer::singleShot(0, [] { QCoreApplication::exit(); });
    QApplication::exec();

    SetWaveDriver(m_sound);
    SetMixerDriver(std::make_shared<SimulatedMixerDriver>());
    m_pDlg = new CPlayerDlg;
    m_hWnd = m_pDlg->GetSafeHwnd();
    ASSERT_TRUE(IsWindow(m_hWnd));
    AfxGetApp()->m_pMainWnd = m_pDlg;
    m_pDlg->ShowWindow(SW_SHOW);
    Pump();
}

void PlayerTest::TearDown() {
    if (IsWindow(m_hWnd)) m_pDlg->DestroyWindow();
    Pump();
    SetMixerDriver(nullptr);
    SetWaveDriver(nullptr);
}

void PlayerTest::Play(int milliseconds) {
    for (; milliseconds > 0; milliseconds -= 20) {
        // The reader refills the queue whenever a block has been counted back.
        Pump();
        Sleep(0);
        m_sound->Advance(20);
        Pump();
    }
}

std::string PlayerTest::Title() const {
    CString text;
    m_pDlg->GetWindowText(text);
    return text.Str();
}

std::string PlayerTest::Face() const {
    const bool play = HasControlNamed("Play");
    const bool pause = HasControlNamed("Pause");
    return play == pause ? "neither or both" : play ? "Play" : "Pause";
}

}  // namespace app_test

namespace {

class TestApp : public CPlayerApp {
public:
    BOOL InitInstance() override {
        m_nResult = RUN_ALL_TESTS();
        return FALSE;
    }
    int m_nResult = 1;
};

TestApp theApp;

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
    // Never a window on the desktop of whoever runs this by hand.
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    UsePlayerResources();
    AfxWinMain(argc, argv);
    return theApp.m_nResult;
}
