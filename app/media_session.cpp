// SPDX-License-Identifier: MIT
#include "app/media_session.h"

#include <filesystem>
#include <iterator>

#include "app/media_decisions.h"
#include "app/player_dlg.h"

namespace {

MediaIdentity Identity() {
    MediaIdentity identity;
    identity.bus_name = "trvplayer";
    CString strTitle;
    strTitle.LoadString(IDS_APP_TITLE);
    identity.name = strTitle.Str();
    identity.desktop_entry = "com.trivelle.MessagePlayer";
    identity.lowest_rate = RateOfSpeed(*std::begin(kSpeeds));
    identity.highest_rate = RateOfSpeed(*std::rbegin(kSpeeds));
    identity.types = {"application/x-trivelle-message"};
    return identity;
}

}  // namespace

CMediaSession::CMediaSession(CPlayerDlg& dlg)
    : m_dlg(dlg), m_pControls(StartMediaControls(Identity(), *this, dlg.GetSafeHwnd())) {}

CMediaSession::~CMediaSession() = default;

void CMediaSession::Opened() {
    ++m_nTrack;
    m_picture.Drop();
    Changed();
}

void CMediaSession::Jumped() {
    m_pControls->Jumped();
    // The bar is dragged and let go without the main window's doing.
    Changed();
}

MediaState CMediaSession::State() {
    const CMessagePanel& panel = m_dlg.Panel();
    MediaState state;
    state.rate = RateOfSpeed(panel.GetSpeed());
    state.can_go_next = m_dlg.Queue().MayGoNext() != FALSE;
    state.can_go_previous = m_dlg.Queue().MayGoPrevious() != FALSE;
    if (panel.GetState() == PanelState::NoMessage) return state;
    state.status = MediaStatusOf(panel.GetState());
    state.track = m_nTrack;
    state.video = panel.IsVideo() != FALSE;
    state.path = m_dlg.Queue().Current().Str();
    state.title = std::filesystem::path(state.path).stem().native();
    state.picture = m_picture.Path();
    state.picture_awaited = m_picture.IsAwaited() != FALSE;
    state.length = panel.GetLength() * kFrameMicroseconds;
    return state;
}

std::int64_t CMediaSession::Position() {
    return m_dlg.Panel().GetPosition() * kFrameMicroseconds;
}

double CMediaSession::Volume() {
    return m_dlg.Volume().Get();
}

void CMediaSession::WantPicture() {
    if (m_dlg.Panel().IsVideo()) m_picture.Want(m_dlg.Queue().Current(), m_dlg.GetSafeHwnd());
}

void CMediaSession::Command(MediaCommand command) {
    switch (command) {
        case MediaCommand::Next:
            m_dlg.GoToMessage(1, TRUE);
            return;
        case MediaCommand::Previous:
            m_dlg.GoToMessage(-1, TRUE);
            return;
        case MediaCommand::Quit:
            m_dlg.PostMessage(WM_CLOSE);
            return;
        default:
            break;
    }
    if (const UINT nCommand = CommandFor(command, MediaStatusOf(m_dlg.Panel().GetState())); nCommand != 0)
        m_dlg.SendMessage(WM_COMMAND, nCommand);
}

void CMediaSession::SeekBy(std::int64_t nOffset) {
    CMessagePanel& panel = m_dlg.Panel();
    if (panel.GetState() == PanelState::NoMessage) return;
    if (const auto nFrame = FrameAfterStep(nOffset, panel.GetPosition(), panel.GetLength()))
        panel.SeekTo(*nFrame);
    else
        m_dlg.GoToMessage(1, TRUE);
}

void CMediaSession::SeekTo(std::int64_t nPosition) {
    CMessagePanel& panel = m_dlg.Panel();
    if (const auto nFrame = FrameOfPosition(nPosition, panel.GetLength())) panel.SeekTo(*nFrame);
}

void CMediaSession::SetVolume(double fVolume) {
    m_dlg.Volume().Set(fVolume);
}

void CMediaSession::SetRate(double fRate) {
    if (fRate == 0)
        Command(MediaCommand::Pause);
    else if (fRate > 0)
        m_dlg.ChangeSpeed(SpeedForRate(fRate));
}

void CMediaSession::OpenFile(const std::string& path) {
    m_dlg.OpenFiles({CString(path)});
}
