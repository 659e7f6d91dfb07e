// The mixer functions as a program uses them, one line each.
#pragma once

#include "platform/sound/mixer.h"
#include "tests/platform/sound/fake_message_queue.h"

inline HMIXEROBJ Object(HMIXER handle) {
    return reinterpret_cast<HMIXEROBJ>(handle);
}

inline MMRESULT OpenMixer0(HMIXER& handle) {
    return mixerOpen(&handle, 0, reinterpret_cast<DWORD_PTR>(kWindow), 0, CALLBACK_WINDOW);
}

inline MMRESULT FindLine(HMIXER handle, DWORD componentType, MIXERLINE& line) {
    line = {};
    line.cbStruct = sizeof line;
    line.dwComponentType = componentType;
    return mixerGetLineInfo(Object(handle), &line, MIXER_GETLINEINFOF_COMPONENTTYPE | MIXER_OBJECTF_HMIXER);
}

inline MMRESULT FindSource(HMIXER handle, DWORD destination, DWORD source, MIXERLINE& line) {
    line = {};
    line.cbStruct = sizeof line;
    line.dwDestination = destination;
    line.dwSource = source;
    return mixerGetLineInfo(Object(handle), &line, MIXER_GETLINEINFOF_SOURCE | MIXER_OBJECTF_HMIXER);
}

inline MMRESULT FindControl(HMIXER handle, DWORD lineId, DWORD type, MIXERCONTROL& control) {
    MIXERLINECONTROLS controls{sizeof controls, lineId, type, 1, sizeof control, &control};
    return mixerGetLineControls(Object(handle), &controls,
                                MIXER_GETLINECONTROLSF_ONEBYTYPE | MIXER_OBJECTF_HMIXER);
}

inline MMRESULT GetValue(HMIXER handle, DWORD controlId, DWORD& value) {
    MIXERCONTROLDETAILS details{sizeof details, controlId, 1, 0, sizeof value, &value};
    return mixerGetControlDetails(Object(handle), &details,
                                  MIXER_GETCONTROLDETAILSF_VALUE | MIXER_OBJECTF_HMIXER);
}

inline MMRESULT SetValue(HMIXER handle, DWORD controlId, DWORD value) {
    MIXERCONTROLDETAILS details{sizeof details, controlId, 1, 0, sizeof value, &value};
    return mixerSetControlDetails(Object(handle), &details,
                                  MIXER_SETCONTROLDETAILSF_VALUE | MIXER_OBJECTF_HMIXER);
}
