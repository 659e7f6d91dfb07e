// SPDX-License-Identifier: MIT
// What the desktop's media keys, panels and lock screens know of the player and ask of it: MPRIS 2.2 on the
// session bus. While a video plays, the desktop is also asked not to blank the screen.
//
// UI thread only. The bus is connected to on a thread of its own after the start, so nothing waits for it,
// and where there is none nothing happens. Until a program has asked for something, nothing is announced and
// no state is computed but whether a video plays.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/framework/wintypes.h"

enum class MediaStatus { Stopped, Paused, Playing };

struct MediaState {
    MediaStatus status = MediaStatus::Stopped;
    unsigned track =
        0;  // another number for each file opened; 0: nothing is open, what follows does not count
    bool video = false;
    std::string path;              // absolute
    std::string title;             // of any bytes
    std::string picture;           // path of a PNG file; empty for none
    bool picture_awaited = false;  // one is being made: MediaControls::Changed will be called
    std::int64_t length = 0;       // microseconds
    double rate = 1;
    bool can_go_next = false;  // also where it is not known yet
    bool can_go_previous = false;
};

enum class MediaCommand { Play, Pause, PlayPause, Stop, Next, Previous, Quit };

// The player's side. Whatever it does may end the player, the media controls with it.
class MediaClient {
public:
    virtual MediaState State() = 0;
    virtual std::int64_t Position() = 0;  // microseconds
    // The player's own, of 1; 1 where it is not known.
    virtual double Volume() = 0;
    // Programs are interested in the picture of what is open: have it made, in the background.
    virtual void WantPicture() = 0;

    virtual void Command(MediaCommand command) = 0;
    // Microseconds: any value at all.
    virtual void SeekBy(std::int64_t offset) = 0;
    virtual void SeekTo(std::int64_t position) = 0;
    // Numbers, but of any size.
    virtual void SetVolume(double volume) = 0;
    virtual void SetRate(double rate) = 0;  // 0 is a pause
    virtual void OpenFile(const std::string& path) = 0;

protected:
    ~MediaClient() = default;
};

class MediaControls {
public:
    virtual ~MediaControls() = default;
    // Something of the state or the volume may have changed. What really has is announced soon, all of it
    // together.
    virtual void Changed() = 0;
    // The position has not just gone on.
    virtual void Jumped() = 0;
};

struct MediaIdentity {
    std::string bus_name;       // what follows "org.mpris.MediaPlayer2."
    std::string name;           // for a person
    std::string desktop_entry;  // its file name without extension
    std::vector<std::string> types;
    double lowest_rate = 1;
    double highest_rate = 1;
};

// The window is the one that is raised on request. The client outlives the controls.
std::unique_ptr<MediaControls> StartMediaControls(const MediaIdentity& identity, MediaClient& client,
                                                  HWND window);
