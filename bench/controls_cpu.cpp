// SPDX-License-Identifier: MIT
// What the moving controls cost: the processor time of this whole process while nothing is shown, while the
// waveform takes 50 values a second, and while the position bar of a five-minute message takes 50 steps too.
//
// Usage: controls_cpu [SECONDS]    (10 when not given; needs no display with QT_QPA_PLATFORM=offscreen)
#include <sys/resource.h>

#include <cmath>
#include <cstdio>
#include <iterator>

#include "bench/bench_app.h"
#include "controls/position_bar.h"
#include "controls/waveform_wnd.h"

namespace {

constexpr UINT_PTR kValueTimer = 1;
constexpr UINT kValueMs = 20;
constexpr int kFramesOfFiveMinutes = 15000;

int g_seconds = 10;

double ProcessorSeconds() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// The panel's layout with its two moving controls in place.
class CPanelDlg : public CDialog {
public:
    CPositionBar m_bar;
    CWaveformWnd m_wave;

protected:
    void DoDataExchange(CDataExchange* dx) override {
        CDialog::DoDataExchange(dx);
        DDX_Control(dx, IDC_POSITION_BAR, m_bar);
        DDX_Control(dx, IDC_PICTURE_FRAME, m_frame);
    }
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        CRect client;
        m_frame.GetClientRect(client);
        m_wave.Create(WS_CHILD, client, &m_frame, 0);
        m_wave.SetGridColor(RGB(0x1F, 0x1F, 0x1F));
        m_wave.SetPlotColor(RGB(0, 0xFF, 0));
        m_wave.SetShift(2);
        m_wave.SetRange(0.0F, 2.0F, TRUE);
        m_wave.ShowWindow(SW_SHOW);
        m_bar.SetRange(kFramesOfFiveMinutes);
        m_bar.SetLead(88);
        return TRUE;
    }

private:
    CStatic m_frame;
};

class CBenchDlg : public CDialog {
public:
    void Start() {
        m_panel.Create(IDD_MESSAGE_PANEL, &m_panelFrame);
        m_panel.ShowWindow(SW_SHOW);
        m_spent = ProcessorSeconds();
        SetTimer(kValueTimer, kValueMs);
    }

protected:
    DECLARE_MESSAGE_MAP()
    void DoDataExchange(CDataExchange* dx) override {
        CDialog::DoDataExchange(dx);
        DDX_Control(dx, IDC_PANEL_FRAME, m_panelFrame);
    }
    afx_msg void OnTimer(UINT_PTR) {
        if (m_phase > 0) {
            m_panel.m_wave.QueueValue(1.0F + 0.8F * std::sin(static_cast<float>(m_ticks) * 0.3F));
            m_panel.m_wave.ShowNextValue();
        }
        if (m_phase > 1) m_panel.m_bar.StepIt();
        if (++m_ticks < g_seconds * 1000 / static_cast<int>(kValueMs)) return;

        const double spent = ProcessorSeconds();
        constexpr const char* kPhases[] = {"timer alone", "waveform", "waveform and position bar"};
        std::printf("%-26s %6.2f %% of a core\n", kPhases[m_phase], 100.0 * (spent - m_spent) / g_seconds);
        std::fflush(stdout);
        m_spent = spent;
        m_ticks = 0;
        if (++m_phase == static_cast<int>(std::size(kPhases))) DestroyWindow();
    }

private:
    CStatic m_panelFrame;
    CPanelDlg m_panel;
    int m_phase = 0;
    int m_ticks = 0;
    double m_spent = 0;
};

BEGIN_MESSAGE_MAP(CBenchDlg, CDialog)
ON_WM_TIMER()
END_MESSAGE_MAP()

CBenchApp<CBenchDlg> g_app;

}  // namespace

int main(int argc, char** argv) {
    return RunBench(argc, argv, g_seconds);
}
