// What stands behind the mixer functions: a driver opens a mixer, which has lines with controls and keeps a
// value for each. Handles, structures and messages are not its business.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/sound/mixer.h"

struct MixerControl {
    DWORD id;  // of one control of this mixer; not 0
    DWORD type;
    LONG minimum;  // bounds as MIXERCONTROL has them; a mute's are 0 and 1
    LONG maximum;
    std::string name;
};

struct MixerLine {
    DWORD componentType;
    std::string name;
    std::vector<MixerControl> controls;
};

struct MixerDestination {
    MixerLine line;
    std::vector<MixerLine> sources;
};

// The side that learns of changes.
class MixerListener {
public:
    virtual ~MixerListener() = default;

    // A control's value has changed. Called on any thread with no lock of the driver's held; one last call
    // may still be under way when the mixer's destructor has returned.
    virtual void OnControlChange(DWORD controlId) = 0;
};

// One open mixer. Any thread. Nothing here waits for a sound server.
class Mixer {
public:
    virtual ~Mixer() = default;

    // MMSYSERR_NODRIVER, MMSYSERR_ERROR.
    virtual MMRESULT GetName(std::string& name) = 0;

    // Lines and controls; they stay the same for the mixer's life.
    virtual const std::vector<MixerDestination>& Destinations() const = 0;

    // The id is one of the mixer's, a value to be set lies within the control's bounds. A meter's value is
    // signed. MMSYSERR_NODRIVER, MMSYSERR_NOTSUPPORTED, MMSYSERR_ERROR.
    virtual MMRESULT GetValue(DWORD controlId, DWORD& value) = 0;
    virtual MMRESULT SetValue(DWORD controlId, DWORD value) = 0;
};

class MixerDriver {
public:
    virtual ~MixerDriver() = default;

    // A second at most, both.
    virtual UINT Count() = 0;
    // MMSYSERR_BADDEVICEID, MMSYSERR_NODRIVER, MMSYSERR_ALLOCATED.
    virtual MMRESULT Open(UINT device, std::shared_ptr<MixerListener> listener,
                          std::unique_ptr<Mixer>& mixer) = 0;
};

// Makes a driver the one that the mixer functions use and returns the one before it; null for none. Open
// mixers keep theirs. Any thread.
std::shared_ptr<MixerDriver> SetMixerDriver(std::shared_ptr<MixerDriver> driver);
