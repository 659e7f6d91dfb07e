// SPDX-License-Identifier: MIT
// How long Pause, Stop and Close keep the UI thread, on a private sound server that plays and on one that is
// stopped by SIGSTOP while a message plays.
//
// Usage: response MESSAGE [ROUNDS]    (1000 when not given; needs no display with QT_QPA_PLATFORM=offscreen)
//
// A round opens the message, plays for a moment, pauses, plays on, stops, closes. The stopped server is let
// go for the opening alone, because a driver cannot open a device that does not answer.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "platform/framework/afxcmn.h"
#include "platform/sound/system_sound.h"
#include "playback/message_panel.h"
#include "res/player_resources.h"
#include "res/resource.h"
#include "tests/platform/sound/private_server.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr UINT_PTR kStepTimer = 1;
constexpr UINT kPlayMs = 15;     // between steps; the message queue runs meanwhile
constexpr UINT kAnswerMs = 300;  // for sound to flow before the server is stopped

struct Times {
    const char* what;
    std::vector<double> ms;

    void Report(const char* server) {
        std::sort(ms.begin(), ms.end());
        std::printf("%-8s %-6s %6zu calls: median %6.3f ms, 99 %% %6.3f ms, worst %6.3f ms\n", server, what,
                    ms.size(), ms[ms.size() / 2], ms[ms.size() * 99 / 100], ms.back());
        ms.clear();
    }
};

class CBenchDlg : public CDialog {
public:
    CBenchDlg(PrivateServer& server, const char* pszMessage, int nRounds)
        : m_server(server), m_strMessage(pszMessage), m_nRounds(nRounds) {}

    BOOL Start() {
        if (!Create(IDD_PLAYER_DIALOG)) return FALSE;
        CDataExchange dx(this, FALSE);
        DDX_Control(&dx, IDC_PANEL_FRAME, m_frame);
        m_pPanel = new CMessagePanel(&m_frame);
        m_pPanel->ShowPanel();
        ShowWindow(SW_SHOW);
        Open();
        return TRUE;
    }

protected:
    DECLARE_MESSAGE_MAP()
    afx_msg void OnTimer(UINT_PTR) {
        if (m_nStep++ == 0) {
            if (m_bFreeze) m_server.Freeze();
            Measure(m_pause, [this] { m_pPanel->Pause(); });
            m_pPanel->Play();
            SetTimer(kStepTimer, kPlayMs);
            return;
        }
        Measure(m_stop, [this] { m_pPanel->Stop(); });
        Measure(m_close, [this] { m_pPanel->Close(); });
        if (m_bFreeze) m_server.Thaw();
        NextRound();
    }

private:
    template <class Call>
    static void Measure(Times& times, Call call) {
        const Clock::time_point start = Clock::now();
        call();
        times.ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }

    void Open() {
        if (!m_pPanel->Open(m_strMessage)) std::exit(1);
        m_nStep = 0;
        m_pPanel->Play();
        SetTimer(kStepTimer, kAnswerMs);
    }

    void NextRound() {
        if (++m_nRound == m_nRounds) {
            for (Times* pTimes : {&m_pause, &m_stop, &m_close})
                pTimes->Report(m_bFreeze ? "stopped" : "playing");
            if (m_bFreeze) {
                DestroyWindow();
                return;
            }
            m_bFreeze = TRUE;
            m_nRound = 0;
        }
        Open();
    }

    PrivateServer& m_server;
    CString m_strMessage;
    int m_nRounds;
    int m_nRound = 0;
    int m_nStep = 0;
    BOOL m_bFreeze = FALSE;
    CStatic m_frame;
    CMessagePanel* m_pPanel = nullptr;
    Times m_pause{"Pause", {}};
    Times m_stop{"Stop", {}};
    Times m_close{"Close", {}};
};

BEGIN_MESSAGE_MAP(CBenchDlg, CDialog)
ON_WM_TIMER()
END_MESSAGE_MAP()

std::unique_ptr<CBenchDlg> g_pDialog;

class CBenchApp : public CWinApp {
public:
    BOOL InitInstance() override {
        m_pMainWnd = g_pDialog.get();
        return g_pDialog->Start();
    }
};

CBenchApp g_app;

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: response MESSAGE [ROUNDS]\n");
        return 2;
    }
    PrivateServer server;  // first: it sets this process's environment
    const int nRounds = argc > 2 ? std::atoi(argv[2]) : 1000;
    g_pDialog = std::make_unique<CBenchDlg>(server, argv[1], std::max(nRounds, 1));
    UseSystemSound();
    UsePlayerResources();
    return AfxWinMain(argc, argv);
}
