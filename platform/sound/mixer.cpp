// The mixer functions: handles, structures, look-ups.
#include "platform/sound/mixer.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/framework/message_queue.h"
#include "platform/sound/mixer_driver.h"

static_assert(sizeof(MIXERCAPS) == 48);
static_assert(sizeof(MIXERLINE) == 168);
static_assert(sizeof(MIXERCONTROL) == 148);

namespace {

// Posts an open mixer's changes to its window.
class ChangePoster : public MixerListener {
public:
    ChangePoster(HMIXER handle, HWND window) : m_handle(handle), m_window(window) {}

    void OnControlChange(DWORD controlId) override {
        if (m_window != nullptr)
            PostMessage(m_window, MM_MIXM_CONTROL_CHANGE, reinterpret_cast<WPARAM>(m_handle),
                        static_cast<LPARAM>(controlId));
    }

private:
    const HMIXER m_handle;
    const HWND m_window;
};

class Mixers {
public:
    Mixers(const Mixers&) = delete;
    Mixers& operator=(const Mixers&) = delete;

    static Mixers& Get() {
        static Mixers mixers;
        return mixers;
    }

    std::shared_ptr<MixerDriver> SetDriver(std::shared_ptr<MixerDriver> driver) {
        const std::scoped_lock lock(m_lock);
        return std::exchange(m_driver, std::move(driver));
    }

    std::shared_ptr<MixerDriver> Driver() {
        const std::scoped_lock lock(m_lock);
        return m_driver;
    }

    HMIXER NewHandle() {
        const std::scoped_lock lock(m_lock);
        return reinterpret_cast<HMIXER>(++m_lastHandle);
    }

    void Add(HMIXER handle, std::shared_ptr<Mixer> mixer) {
        const std::scoped_lock lock(m_lock);
        m_open.emplace_back(handle, std::move(mixer));
    }

    std::shared_ptr<Mixer> Find(UINT_PTR handle) {
        const std::scoped_lock lock(m_lock);
        for (const auto& [number, mixer] : m_open)
            if (reinterpret_cast<UINT_PTR>(number) == handle) return mixer;
        return nullptr;
    }

    std::shared_ptr<Mixer> Take(HMIXER handle) {
        std::shared_ptr<Mixer> taken = Find(reinterpret_cast<UINT_PTR>(handle));
        const std::scoped_lock lock(m_lock);
        std::erase_if(m_open, [handle](const auto& entry) { return entry.first == handle; });
        return taken;
    }

private:
    Mixers() = default;

    std::mutex m_lock;
    std::shared_ptr<MixerDriver> m_driver;
    std::vector<std::pair<HMIXER, std::shared_ptr<Mixer>>> m_open;
    std::uintptr_t m_lastHandle = 0;
};

std::shared_ptr<Mixer> Find(HMIXEROBJ object) {
    return Mixers::Get().Find(reinterpret_cast<UINT_PTR>(object));
}

// Copies what fits with the closing zero, without cutting a character of several bytes in two.
template <std::size_t size>
void CopyName(char (&to)[size], std::string_view from) {
    std::size_t length = std::min(from.size(), size - 1);
    if (length != from.size())
        while (length != 0 && (static_cast<unsigned char>(from[length]) & 0xC0U) == 0x80U) --length;
    std::memset(to, 0, size);
    std::memcpy(to, from.data(), length);
}

// A line by its place: a destination, or one of its sources.
struct Place {
    const MixerDestination* destination = nullptr;
    const MixerLine* line = nullptr;
    DWORD destinationIndex = 0;
    DWORD sourceIndex = 0;
    bool isSource = false;
};

// The id of a line: its destination below, above it 0 or the source's index plus 1.
DWORD LineId(const Place& place) {
    return place.destinationIndex | (place.isSource ? place.sourceIndex + 1 : 0) << 16U;
}

// The first line that `matches`, each destination before its sources.
template <typename Matches>
Place FindLine(const Mixer& mixer, Matches matches) {
    Place place;
    for (const MixerDestination& destination : mixer.Destinations()) {
        place = {&destination, &destination.line, place.destinationIndex, 0, false};
        if (matches(place)) return place;
        place.isSource = true;
        for (const MixerLine& source : destination.sources) {
            place.line = &source;
            if (matches(place)) return place;
            ++place.sourceIndex;
        }
        ++place.destinationIndex;
    }
    return {};
}

const MixerControl* FindControl(const Mixer& mixer, DWORD id) {
    const MixerControl* found = nullptr;
    FindLine(mixer, [&](const Place& place) {
        for (const MixerControl& control : place.line->controls)
            if (control.id == id) found = &control;
        return found != nullptr;
    });
    return found;
}

void Describe(const Place& place, MIXERLINE& line) {
    line = {};
    line.cbStruct = sizeof line;
    line.dwDestination = place.destinationIndex;
    line.dwSource = place.sourceIndex;
    line.dwLineID = LineId(place);
    line.fdwLine = MIXERLINE_LINEF_ACTIVE | (place.isSource ? MIXERLINE_LINEF_SOURCE : 0);
    line.dwComponentType = place.line->componentType;
    line.cChannels = 1;
    line.cConnections = place.isSource ? 0 : static_cast<DWORD>(place.destination->sources.size());
    line.cControls = static_cast<DWORD>(place.line->controls.size());
    CopyName(line.szShortName, place.line->name);
    CopyName(line.szName, place.line->name);
}

void Describe(const MixerControl& control, MIXERCONTROL& to) {
    to = {};
    to.cbStruct = sizeof to;
    to.dwControlID = control.id;
    to.dwControlType = control.type;
    to.fdwControl = MIXERCONTROL_CONTROLF_UNIFORM;
    CopyName(to.szShortName, control.name);
    CopyName(to.szName, control.name);
    to.Bounds.lMinimum = control.minimum;
    to.Bounds.lMaximum = control.maximum;
}

// The checks that reading and writing a value share.
MMRESULT CheckDetails(const MIXERCONTROLDETAILS* details, DWORD flags) {
    static_assert(MIXER_GETCONTROLDETAILSF_VALUE == MIXER_SETCONTROLDETAILSF_VALUE);
    if (details == nullptr) return MMSYSERR_INVALPARAM;
    if (flags != (MIXER_GETCONTROLDETAILSF_VALUE | MIXER_OBJECTF_HMIXER)) return MMSYSERR_INVALFLAG;
    const bool good = details->cbStruct == sizeof *details && details->cChannels == 1 &&
                      details->cMultipleItems == 0 && details->cbDetails == sizeof(DWORD) &&
                      details->paDetails != nullptr;
    return good ? MMSYSERR_NOERROR : MMSYSERR_INVALPARAM;
}

bool InBounds(const MixerControl& control, DWORD value) {
    return value >= static_cast<DWORD>(control.minimum) && value <= static_cast<DWORD>(control.maximum);
}

}  // namespace

std::shared_ptr<MixerDriver> SetMixerDriver(std::shared_ptr<MixerDriver> driver) {
    return Mixers::Get().SetDriver(std::move(driver));
}

UINT mixerGetNumDevs() {
    const std::shared_ptr<MixerDriver> driver = Mixers::Get().Driver();
    return driver ? driver->Count() : 0;
}

MMRESULT mixerOpen(HMIXER* phmx, UINT uMxId, DWORD_PTR dwCallback, DWORD_PTR /*dwInstance*/, DWORD fdwOpen) {
    if (phmx == nullptr) return MMSYSERR_INVALPARAM;
    if (fdwOpen != CALLBACK_NULL && fdwOpen != CALLBACK_WINDOW) return MMSYSERR_INVALFLAG;
    const HWND window = fdwOpen == CALLBACK_WINDOW ? reinterpret_cast<HWND>(dwCallback) : nullptr;
    if (fdwOpen == CALLBACK_WINDOW && !IsWindow(window)) return MMSYSERR_INVALPARAM;
    const std::shared_ptr<MixerDriver> driver = Mixers::Get().Driver();
    if (!driver) return MMSYSERR_NODRIVER;
    const HMIXER handle = Mixers::Get().NewHandle();
    std::unique_ptr<Mixer> mixer;
    const MMRESULT result = driver->Open(uMxId, std::make_shared<ChangePoster>(handle, window), mixer);
    if (result != MMSYSERR_NOERROR) return result;
    Mixers::Get().Add(handle, std::move(mixer));
    *phmx = handle;
    return MMSYSERR_NOERROR;
}

MMRESULT mixerClose(HMIXER hmx) {
    return Mixers::Get().Take(hmx) ? MMSYSERR_NOERROR : MMSYSERR_INVALHANDLE;
}

MMRESULT mixerGetDevCaps(UINT_PTR uMxId, MIXERCAPS* pmxcaps, UINT cbmxcaps) {
    const std::shared_ptr<Mixer> mixer = Mixers::Get().Find(uMxId);
    if (!mixer) return MMSYSERR_INVALHANDLE;
    if (pmxcaps == nullptr || cbmxcaps != sizeof *pmxcaps) return MMSYSERR_INVALPARAM;
    std::string name;
    const MMRESULT result = mixer->GetName(name);
    if (result != MMSYSERR_NOERROR) return result;
    *pmxcaps = {};
    CopyName(pmxcaps->szPname, name);
    pmxcaps->cDestinations = static_cast<DWORD>(mixer->Destinations().size());
    return MMSYSERR_NOERROR;
}

MMRESULT mixerGetLineInfo(HMIXEROBJ hmxobj, MIXERLINE* pmxl, DWORD fdwInfo) {
    const std::shared_ptr<Mixer> mixer = Find(hmxobj);
    if (!mixer) return MMSYSERR_INVALHANDLE;
    if (pmxl == nullptr || pmxl->cbStruct != sizeof *pmxl) return MMSYSERR_INVALPARAM;
    Place found;
    if (fdwInfo == (MIXER_GETLINEINFOF_COMPONENTTYPE | MIXER_OBJECTF_HMIXER)) {
        found = FindLine(*mixer, [pmxl](const Place& place) {
            return place.line->componentType == pmxl->dwComponentType;
        });
    } else if (fdwInfo == (MIXER_GETLINEINFOF_SOURCE | MIXER_OBJECTF_HMIXER)) {
        found = FindLine(*mixer, [pmxl](const Place& place) {
            return place.isSource && place.destinationIndex == pmxl->dwDestination &&
                   place.sourceIndex == pmxl->dwSource;
        });
    } else {
        return MMSYSERR_INVALFLAG;
    }
    if (found.line == nullptr) return MIXERR_INVALLINE;
    Describe(found, *pmxl);
    return MMSYSERR_NOERROR;
}

MMRESULT mixerGetLineControls(HMIXEROBJ hmxobj, MIXERLINECONTROLS* pmxlc, DWORD fdwControls) {
    const std::shared_ptr<Mixer> mixer = Find(hmxobj);
    if (!mixer) return MMSYSERR_INVALHANDLE;
    if (pmxlc == nullptr || pmxlc->cbStruct != sizeof *pmxlc || pmxlc->cControls != 1 ||
        pmxlc->cbmxctrl != sizeof(MIXERCONTROL) || pmxlc->pamxctrl == nullptr)
        return MMSYSERR_INVALPARAM;
    if (fdwControls != (MIXER_GETLINECONTROLSF_ONEBYTYPE | MIXER_OBJECTF_HMIXER)) return MMSYSERR_INVALFLAG;
    const Place found =
        FindLine(*mixer, [pmxlc](const Place& place) { return LineId(place) == pmxlc->dwLineID; });
    if (found.line == nullptr) return MIXERR_INVALLINE;
    for (const MixerControl& control : found.line->controls) {
        if (control.type != pmxlc->dwControlType) continue;
        Describe(control, *pmxlc->pamxctrl);
        return MMSYSERR_NOERROR;
    }
    return MIXERR_INVALCONTROL;
}

MMRESULT mixerGetControlDetails(HMIXEROBJ hmxobj, MIXERCONTROLDETAILS* pmxcd, DWORD fdwDetails) {
    const std::shared_ptr<Mixer> mixer = Find(hmxobj);
    if (!mixer) return MMSYSERR_INVALHANDLE;
    const MMRESULT good = CheckDetails(pmxcd, fdwDetails);
    if (good != MMSYSERR_NOERROR) return good;
    if (FindControl(*mixer, pmxcd->dwControlID) == nullptr) return MIXERR_INVALCONTROL;
    DWORD value = 0;
    const MMRESULT result = mixer->GetValue(pmxcd->dwControlID, value);
    if (result == MMSYSERR_NOERROR) std::memcpy(pmxcd->paDetails, &value, sizeof value);
    return result;
}

MMRESULT mixerSetControlDetails(HMIXEROBJ hmxobj, MIXERCONTROLDETAILS* pmxcd, DWORD fdwDetails) {
    const std::shared_ptr<Mixer> mixer = Find(hmxobj);
    if (!mixer) return MMSYSERR_INVALHANDLE;
    const MMRESULT good = CheckDetails(pmxcd, fdwDetails);
    if (good != MMSYSERR_NOERROR) return good;
    const MixerControl* control = FindControl(*mixer, pmxcd->dwControlID);
    if (control == nullptr) return MIXERR_INVALCONTROL;
    if (control->type == MIXERCONTROL_CONTROLTYPE_PEAKMETER) return MMSYSERR_NOTSUPPORTED;
    DWORD value = 0;
    std::memcpy(&value, pmxcd->paDetails, sizeof value);
    if (!InBounds(*control, value)) return MIXERR_INVALVALUE;
    return mixer->SetValue(pmxcd->dwControlID, value);
}
