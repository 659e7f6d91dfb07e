// SPDX-License-Identifier: MIT
// From a seek to its picture on the screen and to its sound at the monitor of a private sound server, in a
// message of ten hours that plays, and whether the sound is what the message decodes to. Then from twice the
// speed to the first sample that is heard of it.
//
// Usage: seeking [SEEKS]    (500 when not given; needs no display with QT_QPA_PLATFORM=offscreen)
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "codec/message_time.h"
#include "codec/picture_geometry.h"
#include "codec/speech_frame.h"
#include "codec/vdec.h"
#include "platform/framework/afxcmn.h"
#include "platform/framework/window.h"
#include "platform/sound/system_sound.h"
#include "playback/message_panel.h"
#include "res/player_resources.h"
#include "res/resource.h"
#include "tests/platform/sound/private_server.h"
#include "tests/support/message_builder.h"

namespace {

using Clock = std::chrono::steady_clock;
using Look = std::array<COLORREF, 7>;

constexpr int kRate = 5;
constexpr int64_t kFrames = 10 * 60 * 60 * 50;
constexpr int kPictures = 16;  // different ones, over and over
constexpr UINT kPlayMs = 400;  // from seek to speed, and from there to the next seek
constexpr std::size_t kDecoded = 16 * kPlayMs;

// The bytes of a speech frame: noise, another one for each.
std::array<uint8_t, kSpeechFrameBytes> FrameBytes(int64_t frame) {
    std::array<uint8_t, kSpeechFrameBytes> bytes;
    std::minstd_rand noise(static_cast<unsigned>(frame + 1));
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(noise() >> 8);
    return bytes;
}

struct Material {
    std::filesystem::path path;
    std::vector<Look> looks;

    explicit Material(std::filesystem::path at) : path(std::move(at)) {
        std::vector<std::vector<uint8_t>> records;
        std::vector<uint8_t> picture(kPictureBytes);
        MessageBuilder builder;
        vdec_init();
        vdec_set_quality(3);
        for (int k = 0; k < kPictures; ++k) {
            const auto from = static_cast<std::ptrdiff_t>(builder.Data().size());
            builder.Picture();
            records.emplace_back(builder.Data().begin() + from, builder.Data().end());
            vdec_decode(records.back().data() + 3, records.back().size() - 3, picture.data());
            Look& look = looks.emplace_back();
            for (int i = 1; i < 8; ++i) {
                const uint8_t* bgr =
                    picture.data() + (kPictureHeight - 1 - i * 30) * kPictureRowBytes + i * 40 * 3;
                look[static_cast<std::size_t>(i - 1)] = RGB(bgr[2], bgr[1], bgr[0]);
            }
        }
        vdec_free();
        std::ofstream file(path, std::ios::binary);
        const auto write = [&file](const auto& bytes) {
            file.write(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<std::streamsize>(bytes.size()));
        };
        write(MessageBuilder(kRate, kFrames).Data());
        for (int64_t frame = 0; frame < kFrames; ++frame) {
            if (frame % kFramesPerSpeechBlock == 0) {
                write(records[static_cast<std::size_t>(frame / kFramesPerSpeechBlock % kPictures)]);
                file.put(static_cast<char>(kSpeechRecord));
            }
            write(FrameBytes(frame));
        }
    }
    ~Material() { std::filesystem::remove(path); }
    Material(const Material&) = delete;
    Material& operator=(const Material&) = delete;
};

struct Seek {
    int frame = 0;
    Clock::time_point key;
    Clock::time_point faster;
    Clock::time_point picture = Clock::time_point::max();
};

// What a message decodes to from a frame on: far more frames come before it than the player gives.
std::vector<int16_t> Decoded(int64_t frame) {
    constexpr int64_t kBefore = 400;
    std::vector<int16_t> samples;
    const gsm decoder = gsm_create();
    for (int64_t at = std::max<int64_t>(frame - kBefore, 0); samples.size() < kDecoded; ++at) {
        std::array<int16_t, kSpeechFrameSamples> decoded;
        DecodeSpeechFrame(decoder, FrameBytes(at).data(), decoded.data());
        if (at >= frame) samples.insert(samples.end(), decoded.begin(), decoded.end());
    }
    gsm_destroy(decoder);
    return samples;
}

void Report(const char* what, std::vector<double> ms) {
    if (ms.empty()) return;
    std::sort(ms.begin(), ms.end());
    std::printf("%-8s %4zu: median %6.1f ms, 99 %% %6.1f ms, worst %6.1f ms\n", what, ms.size(),
                ms[ms.size() / 2], ms[ms.size() * 99 / 100], ms.back());
}

double Ms(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

class CBenchDlg : public CDialog {
public:
    CBenchDlg(const Material& material, int nSeeks)
        : m_material(material), m_seeks(static_cast<std::size_t>(nSeeks)) {}

    BOOL Start() {
        if (!Create(IDD_PLAYER_DIALOG)) return FALSE;
        CDataExchange dx(this, FALSE);
        DDX_Control(&dx, IDC_PANEL_FRAME, m_frame);
        m_pPanel = new CMessagePanel(&m_frame);
        m_pPanel->ShowPanel();
        ShowWindow(SW_SHOW);
        if (!m_pPanel->Open(CString(m_material.path.c_str()))) return FALSE;
        const HWND hFrame = m_pPanel->GetDlgItem(IDC_PICTURE_FRAME)->m_hWnd;
        m_hPicture = windows::Find(hFrame)->children.at(2)->handle;
        m_recording = std::make_unique<MonitorRecording>();
        m_watcher = std::thread([this] { Watch(); });
        m_pPanel->Play();
        SetTimer(1, kPlayMs);
        return TRUE;
    }

protected:
    DECLARE_MESSAGE_MAP()
    afx_msg void OnTimer(UINT_PTR) {
        if (m_pPanel->GetSpeed() == kNormalSpeed && m_nNext != 0) {
            m_seeks[m_nNext - 1].faster = Clock::now();
            m_pPanel->SetSpeed(2 * kNormalSpeed);
            return;
        }
        m_pPanel->SetSpeed(kNormalSpeed);
        if (m_nNext == m_seeks.size()) {
            m_bDone = true;
            m_watcher.join();
            Evaluate();
            DestroyWindow();
            return;
        }
        Seek& seek = m_seeks[m_nNext];
        const auto same = [this](int frame) {
            const int64_t apart = PictureAt(frame, kRate) - PictureAt(m_pPanel->GetPosition(), kRate);
            return apart % kPictures == 0 || apart % kPictures == 1;
        };
        do seek.frame = static_cast<int>(m_random() % (kFrames - 500) + 20);
        while (same(seek.frame));
        seek.key = Clock::now();
        m_nWatched = ++m_nNext;
        m_pPanel->SeekTo(seek.frame);
    }

private:
    // Looks for the picture of the latest seek once in half a millisecond.
    void Watch() {
        const auto surface = windows::SurfaceOf(m_hPicture);
        while (!m_bDone) {
            std::this_thread::sleep_for(std::chrono::microseconds(500));
            const std::size_t nSeek = m_nWatched;
            if (nSeek == 0 || m_seeks[nSeek - 1].picture != Clock::time_point::max()) continue;
            const int64_t nPicture = PictureAt(m_seeks[nSeek - 1].frame, kRate);
            const Look& look = m_material.looks[static_cast<std::size_t>(nPicture % kPictures)];
            bool shown = true;
            for (int i = 1; i < 8 && shown; ++i)
                shown = surface->pixel(i * 40, i * 30) == look[static_cast<std::size_t>(i - 1)];
            if (shown) m_seeks[nSeek - 1].picture = Clock::now();
        }
    }

    void Evaluate() const {
        const std::vector<int16_t> heard = m_recording->Samples();
        std::vector<double> pictures;
        std::vector<double> sounds;
        std::vector<double> speeds;
        auto searched = heard.begin();
        std::size_t nMissed = 0;
        std::size_t nWrong = 0;
        for (const Seek& seek : m_seeks) {
            if (seek.picture != Clock::time_point::max()) pictures.push_back(Ms(seek.picture - seek.key));
            const std::vector<int16_t> expected = Decoded(seek.frame);
            const auto found =
                std::search(searched, heard.end(), expected.begin(), expected.begin() + kSpeechFrameSamples);
            const auto differs = std::mismatch(found, heard.end(), expected.begin(), expected.end()).first;
            if (found == heard.end() || differs == heard.end()) {
                ++nMissed;
                continue;
            }
            searched = differs;
            const auto heardAt = [&](auto sample) {
                return m_recording->HeardAt(static_cast<std::size_t>(sample - heard.begin()));
            };
            sounds.push_back(Ms(heardAt(found) - seek.key));
            nWrong += differs - found < 8 * int64_t{kPlayMs} / 2;
            speeds.push_back(Ms(heardAt(differs) - seek.faster));
        }
        Report("picture", pictures);
        Report("sound", sounds);
        Report("speed", speeds);
        std::printf("%zu seeks: %zu without their picture, %zu not heard, %zu heard with other samples\n",
                    m_seeks.size(), m_seeks.size() - pictures.size(), nMissed, nWrong);
    }

    const Material& m_material;
    std::vector<Seek> m_seeks;
    std::size_t m_nNext = 0;
    std::atomic<std::size_t> m_nWatched = 0;
    std::atomic<bool> m_bDone = false;
    std::mt19937 m_random{1};
    CStatic m_frame;
    CMessagePanel* m_pPanel = nullptr;
    HWND m_hPicture = nullptr;
    std::unique_ptr<MonitorRecording> m_recording;
    std::thread m_watcher;
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
    PrivateServer server;  // first: it sets this process's environment
    const Material material(std::filesystem::temp_directory_path() /
                            ("seeking-" + std::to_string(std::random_device()()) + ".trv"));
    g_pDialog = std::make_unique<CBenchDlg>(material, std::max(argc > 1 ? std::atoi(argv[1]) : 500, 1));
    UseSystemSound();
    UsePlayerResources();
    return AfxWinMain(argc, argv);
}
