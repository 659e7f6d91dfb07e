// SPDX-License-Identifier: MIT
// The main window's side of the desktop's media controls.
#pragma once

#include <memory>

#include "app/first_picture.h"
#include "platform/shell/media_controls.h"

class CPlayerDlg;

// UI thread only. Part of the main window, from its creation until before its children go.
class CMediaSession final : private MediaClient {
public:
    explicit CMediaSession(CPlayerDlg& dlg);
    ~CMediaSession();
    CMediaSession(const CMediaSession&) = delete;
    CMediaSession& operator=(const CMediaSession&) = delete;

    // Another message is open, or none.
    void Opened();
    // Anything else may have changed.
    void Changed() { m_pControls->Changed(); }
    void Jumped();

private:
    MediaState State() override;
    std::int64_t Position() override;
    double Volume() override;
    void WantPicture() override;
    void Command(MediaCommand command) override;
    void SeekBy(std::int64_t nOffset) override;
    void SeekTo(std::int64_t nPosition) override;
    void SetVolume(double fVolume) override;
    void SetRate(double fRate) override;
    void OpenFile(const std::string& path) override;

    CPlayerDlg& m_dlg;
    unsigned m_nTrack = 0;  // counts the messages opened
    CFirstPicture m_picture;
    std::unique_ptr<MediaControls> m_pControls;
};
