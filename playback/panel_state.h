// SPDX-License-Identifier: MIT
// The states of the message panel and what leads from one to another. Pure: the panel carries out what comes
// back.
#pragma once

enum class PanelState {
    NoMessage,
    Ready,     // opened, nothing played yet
    Playing,   // the reader has more to read
    Draining,  // everything has been read, and what is left of it sounds
    Paused,
    Interrupted,  // paused by a call, and to play on after it
    Stopped,      // at the start of the message
};

enum class PanelEvent {
    Opened,
    Play,
    Pause,
    Stop,
    Seek,
    ReadAll,   // the reader has met the end of the message
    ReadMore,  // it has found more after all: the file has grown
    RanDry,    // nothing is left that could sound or be shown
    CallBegins,
    CallEnds,
    Unplugged,  // the headphones, or the device that the sound was on
    Close,
};

enum class PanelAction {
    None,
    Start,   // sound, pictures and the reader
    Hold,    // all three, keeping what is queued
    Rewind,  // drop what is queued and go to the start
    Move,    // drop what is queued and go to the place that was sought
    End,     // Rewind, and tell the main window that the message has ended
    Release,
};

struct PanelStep {
    PanelState state;
    PanelAction action;
};

constexpr bool IsPlaying(PanelState state) {
    return state == PanelState::Playing || state == PanelState::Draining;
}

// An event that does not concern a state changes nothing.
constexpr PanelStep Step(PanelState state, PanelEvent event) {
    const PanelStep nothing = {state, PanelAction::None};
    if (event == PanelEvent::Opened) return {PanelState::Ready, PanelAction::None};
    if (state == PanelState::NoMessage) return nothing;

    switch (event) {
        case PanelEvent::Play:
            // While draining too: the file may have grown.
            if (state == PanelState::Playing) return nothing;
            return {PanelState::Playing, PanelAction::Start};
        case PanelEvent::Pause:
        case PanelEvent::Unplugged:
            if (state == PanelState::Interrupted) return {PanelState::Paused, PanelAction::None};
            if (!IsPlaying(state)) return nothing;
            return {PanelState::Paused, PanelAction::Hold};
        case PanelEvent::CallBegins:
            if (!IsPlaying(state)) return nothing;
            return {PanelState::Interrupted, PanelAction::Hold};
        case PanelEvent::CallEnds:
            if (state != PanelState::Interrupted) return nothing;
            return {PanelState::Playing, PanelAction::Start};
        case PanelEvent::Stop:
            if (state == PanelState::Stopped) return nothing;
            return {PanelState::Stopped, PanelAction::Rewind};
        case PanelEvent::Seek:
            if (state == PanelState::Interrupted) return {state, PanelAction::Move};
            return {IsPlaying(state) ? PanelState::Playing : PanelState::Paused, PanelAction::Move};
        case PanelEvent::ReadAll:
            if (state != PanelState::Playing) return nothing;
            return {PanelState::Draining, PanelAction::None};
        case PanelEvent::ReadMore:
            if (state != PanelState::Draining) return nothing;
            return {PanelState::Playing, PanelAction::None};
        case PanelEvent::RanDry:
            // With more to be read, what has run dry only waits for the reader.
            if (state != PanelState::Draining) return nothing;
            return {PanelState::Stopped, PanelAction::End};
        case PanelEvent::Close:
            return {PanelState::NoMessage, PanelAction::Release};
        case PanelEvent::Opened:
            break;
    }
    return nothing;
}
