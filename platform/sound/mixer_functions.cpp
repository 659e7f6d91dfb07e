// SPDX-License-Identifier: MIT
// The mixer functions: handles, structures, and the five controls.
#include "platform/sound/mixer_functions.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "platform/framework/handle_table.h"
#include "platform/sound/sound_drivers.h"

static_assert(sizeof(MIXERLINE) == 168);
static_assert(sizeof(MIXERCONTROL) == 148);

namespace {

// The speakers are destination 0, and the wave output is their source 0 unless it feeds something else.
constexpr DWORD kSpeakersLine = 0;
constexpr DWORD kWaveLine = 0x10000;

struct Control {
    DWORD id;
    DWORD line;
    DWORD type;
    LONG minimum;
    LONG maximum;
};

constexpr Control kControls[] = {
    {kMasterVolume, kSpeakersLine, MIXERCONTROL_CONTROLTYPE_VOLUME, 0, 65535},
    {kMasterMute, kSpeakersLine, MIXERCONTROL_CONTROLTYPE_MUTE, 0, 1},
    {kWaveVolume, kWaveLine, MIXERCONTROL_CONTROLTYPE_VOLUME, 0, 65535},
    {kWaveMute, kWaveLine, MIXERCONTROL_CONTROLTYPE_MUTE, 0, 1},
    {kWavePeak, kWaveLine, MIXERCONTROL_CONTROLTYPE_PEAKMETER, -32768, 32767},
};

// Open mixers: the windows that they notify.
HandleTable<HWND, HMIXER>& Open() {
    static HandleTable<HWND, HMIXER> mixers;
    return mixers;
}

// The open mixer's driver, or null.
std::shared_ptr<MixerDriver> Find(HMIXEROBJ object) {
    return Open().Find(reinterpret_cast<HMIXER>(object)) ? CurrentMixerDriver() : nullptr;
}

// The first control of the mixer that `matches`; null when there is none.
template <typename Matches>
const Control* FindControl(const MixerDriver& mixer, Matches matches) {
    const auto found = std::find_if(std::begin(kControls), std::end(kControls), [&](const Control& control) {
        return (mixer.Missing() >> control.id & 1U) == 0 && matches(control);
    });
    return found == std::end(kControls) ? nullptr : found;
}

const Control* FindControl(const MixerDriver& mixer, DWORD id) {
    return FindControl(mixer, [id](const Control& control) { return control.id == id; });
}

// A line without controls is not there.
bool HasLine(const MixerDriver& mixer, DWORD line) {
    return FindControl(mixer, [line](const Control& control) { return control.line == line; }) != nullptr;
}

bool WaveFeedsSpeakers(const MixerDriver& mixer) {
    return (mixer.Missing() & 1U) == 0 && HasLine(mixer, kSpeakersLine) && HasLine(mixer, kWaveLine);
}

// Copies the first characters of UTF-8 text, MAXPNAMELEN - 1 at most.
void CopyName(char (&to)[4 * MAXPNAMELEN], std::string_view from) {
    std::size_t length = 0;
    std::size_t characters = 0;
    for (; length != from.size() && length != sizeof to - 1; ++length) {
        const bool begins = (static_cast<unsigned char>(from[length]) & 0xC0U) != 0x80U;
        if (begins && ++characters == MAXPNAMELEN) break;
    }
    std::memcpy(to, from.data(), length);
}

// The checks that reading and writing a value share; *control is the control that the details name.
MMRESULT CheckDetails(const MixerDriver* mixer, const MIXERCONTROLDETAILS* details, DWORD flags,
                      const Control** control) {
    static_assert(MIXER_GETCONTROLDETAILSF_VALUE == MIXER_SETCONTROLDETAILSF_VALUE);
    if (mixer == nullptr) return MMSYSERR_INVALHANDLE;
    if (details == nullptr || details->cbStruct != sizeof *details || details->cChannels != 1 ||
        details->cMultipleItems != 0 || details->cbDetails != sizeof(DWORD) || details->paDetails == nullptr)
        return MMSYSERR_INVALPARAM;
    if (flags != (MIXER_GETCONTROLDETAILSF_VALUE | MIXER_OBJECTF_HMIXER)) return MMSYSERR_INVALFLAG;
    *control = FindControl(*mixer, details->dwControlID);
    return *control == nullptr ? MIXERR_INVALCONTROL : MMSYSERR_NOERROR;
}

}  // namespace

void NotifyControlChange(DWORD controlId) {
    for (const HMIXER handle : Open().All())
        if (const std::shared_ptr<HWND> window = Open().Find(handle))
            PostSoundMessage(*window, MM_MIXM_CONTROL_CHANGE, reinterpret_cast<WPARAM>(handle),
                             static_cast<LPARAM>(controlId));
}

UINT mixerGetNumDevs() {
    const std::shared_ptr<MixerDriver> mixer = CurrentMixerDriver();
    return mixer && mixer->Exists() ? 1 : 0;
}

MMRESULT mixerOpen(HMIXER* phmx, UINT uMxId, DWORD_PTR dwCallback, DWORD_PTR /*dwInstance*/, DWORD fdwOpen) {
    if (phmx == nullptr) return MMSYSERR_INVALPARAM;
    if (fdwOpen != CALLBACK_NULL && fdwOpen != CALLBACK_WINDOW) return MMSYSERR_INVALFLAG;
    if (uMxId != 0) return MMSYSERR_BADDEVICEID;
    if (mixerGetNumDevs() == 0) return MMSYSERR_NODRIVER;
    const HWND window = fdwOpen == CALLBACK_WINDOW ? reinterpret_cast<HWND>(dwCallback) : nullptr;
    *phmx = Open().Add(std::make_shared<HWND>(window));
    return MMSYSERR_NOERROR;
}

MMRESULT mixerClose(HMIXER hmx) {
    return Open().Remove(hmx) ? MMSYSERR_NOERROR : MMSYSERR_INVALHANDLE;
}

MMRESULT mixerGetDevCaps(UINT_PTR uMxId, MIXERCAPS* pmxcaps, UINT cbmxcaps) {
    const std::shared_ptr<MixerDriver> mixer = Find(reinterpret_cast<HMIXEROBJ>(uMxId));
    if (!mixer) return MMSYSERR_INVALHANDLE;
    if (pmxcaps == nullptr || cbmxcaps != sizeof *pmxcaps) return MMSYSERR_INVALPARAM;
    std::string name;
    const MMRESULT result = mixer->GetName(name);
    if (result != MMSYSERR_NOERROR) return result;
    *pmxcaps = {};
    CopyName(pmxcaps->szPname, name);
    pmxcaps->cDestinations = 1;
    return MMSYSERR_NOERROR;
}

MMRESULT mixerGetLineInfo(HMIXEROBJ hmxobj, MIXERLINE* pmxl, DWORD fdwInfo) {
    const std::shared_ptr<MixerDriver> mixer = Find(hmxobj);
    if (!mixer) return MMSYSERR_INVALHANDLE;
    if (pmxl == nullptr || pmxl->cbStruct != sizeof *pmxl) return MMSYSERR_INVALPARAM;
    bool wave = pmxl->dwComponentType == MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT;
    bool found = wave ? HasLine(*mixer, kWaveLine)
                      : pmxl->dwComponentType == MIXERLINE_COMPONENTTYPE_DST_SPEAKERS &&
                            HasLine(*mixer, kSpeakersLine);
    if (fdwInfo == (MIXER_GETLINEINFOF_SOURCE | MIXER_OBJECTF_HMIXER)) {
        wave = true;
        found = WaveFeedsSpeakers(*mixer) && pmxl->dwDestination == 0 && pmxl->dwSource == 0;
    } else if (fdwInfo != (MIXER_GETLINEINFOF_COMPONENTTYPE | MIXER_OBJECTF_HMIXER)) {
        return MMSYSERR_INVALFLAG;
    }
    if (!found) return MIXERR_INVALLINE;
    *pmxl = {};
    pmxl->cbStruct = sizeof *pmxl;
    pmxl->dwLineID = wave ? kWaveLine : kSpeakersLine;
    pmxl->dwComponentType = wave ? MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT : MIXERLINE_COMPONENTTYPE_DST_SPEAKERS;
    pmxl->cConnections = !wave && WaveFeedsSpeakers(*mixer) ? 1 : 0;
    return MMSYSERR_NOERROR;
}

MMRESULT mixerGetLineControls(HMIXEROBJ hmxobj, MIXERLINECONTROLS* pmxlc, DWORD fdwControls) {
    const std::shared_ptr<MixerDriver> mixer = Find(hmxobj);
    if (!mixer) return MMSYSERR_INVALHANDLE;
    if (pmxlc == nullptr || pmxlc->cbStruct != sizeof *pmxlc || pmxlc->cControls != 1 ||
        pmxlc->cbmxctrl != sizeof(MIXERCONTROL) || pmxlc->pamxctrl == nullptr)
        return MMSYSERR_INVALPARAM;
    if (fdwControls != (MIXER_GETLINECONTROLSF_ONEBYTYPE | MIXER_OBJECTF_HMIXER)) return MMSYSERR_INVALFLAG;
    if (!HasLine(*mixer, pmxlc->dwLineID)) return MIXERR_INVALLINE;
    const Control* found = FindControl(*mixer, [pmxlc](const Control& control) {
        return control.line == pmxlc->dwLineID && control.type == pmxlc->dwControlType;
    });
    if (found == nullptr) return MIXERR_INVALCONTROL;
    MIXERCONTROL& control = *pmxlc->pamxctrl;
    control = {};
    control.cbStruct = sizeof control;
    control.dwControlID = found->id;
    control.dwControlType = found->type;
    control.fdwControl = MIXERCONTROL_CONTROLF_UNIFORM;
    control.Bounds.lMinimum = found->minimum;
    control.Bounds.lMaximum = found->maximum;
    return MMSYSERR_NOERROR;
}

MMRESULT mixerGetControlDetails(HMIXEROBJ hmxobj, MIXERCONTROLDETAILS* pmxcd, DWORD fdwDetails) {
    const std::shared_ptr<MixerDriver> mixer = Find(hmxobj);
    const Control* control = nullptr;
    MMRESULT result = CheckDetails(mixer.get(), pmxcd, fdwDetails, &control);
    if (result != MMSYSERR_NOERROR) return result;
    DWORD value = 0;
    result = mixer->GetValue(control->id, value);
    if (result == MMSYSERR_NOERROR) std::memcpy(pmxcd->paDetails, &value, sizeof value);
    return result;
}

MMRESULT mixerSetControlDetails(HMIXEROBJ hmxobj, MIXERCONTROLDETAILS* pmxcd, DWORD fdwDetails) {
    const std::shared_ptr<MixerDriver> mixer = Find(hmxobj);
    const Control* control = nullptr;
    const MMRESULT result = CheckDetails(mixer.get(), pmxcd, fdwDetails, &control);
    if (result != MMSYSERR_NOERROR) return result;
    if (control->type == MIXERCONTROL_CONTROLTYPE_PEAKMETER) return MMSYSERR_NOTSUPPORTED;
    DWORD value = 0;
    std::memcpy(&value, pmxcd->paDetails, sizeof value);
    if (value > static_cast<DWORD>(control->maximum)) return MIXERR_INVALVALUE;
    return mixer->SetValue(control->id, value);
}
