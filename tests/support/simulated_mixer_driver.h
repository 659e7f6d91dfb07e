// SPDX-License-Identifier: MIT
// A mixer without a sound card: controls can be taken away, it can refuse, and it keeps count of what reaches
// it. Volumes are at 40000 and 50000, nothing is muted, the meter reads 0. One thread.
#pragma once

#include <string>

#include "platform/sound/sound_drivers.h"

class SimulatedMixerDriver : public MixerDriver {
public:
    bool Exists() override { return m_count != 0; }
    unsigned Missing() const override { return m_missing; }

    MMRESULT GetName(std::string& name) override {
        if (m_result == MMSYSERR_NOERROR) name = m_name;
        return m_result;
    }

    MMRESULT GetValue(DWORD controlId, DWORD& value) override {
        ++m_reads;
        if (m_result == MMSYSERR_NOERROR) value = m_values[controlId];
        return m_result;
    }

    MMRESULT SetValue(DWORD controlId, DWORD value) override {
        ++m_writes;
        if (m_result == MMSYSERR_NOERROR) Change(controlId, value);
        return m_result;
    }

    // Another program's change, notified like any other but for the meter's.
    void Change(DWORD controlId, DWORD value) {
        m_values[controlId] = value;
        if (controlId != kWavePeak) NotifyControlChange(controlId);
    }

    void SetCount(unsigned mixers) { m_count = mixers; }  // 1, or 0 for a machine without
    // As MixerDriver::Missing has it.
    void SetMissing(unsigned missing) { m_missing = missing; }
    void SetName(const std::string& name) { m_name = name; }
    // What the calls return from now on; MMSYSERR_NOERROR lets them succeed again.
    void SetResult(MMRESULT result) { m_result = result; }

    DWORD Value(DWORD controlId) const { return m_values[controlId]; }
    unsigned Reads() const { return m_reads; }  // of values, successful or not
    unsigned Writes() const { return m_writes; }

private:
    unsigned m_count = 1;
    unsigned m_missing = 0;
    std::string m_name = "Simulated Audio";
    MMRESULT m_result = MMSYSERR_NOERROR;
    DWORD m_values[kWavePeak + 1] = {0, 40000, 0, 50000, 0, 0};
    unsigned m_reads = 0;
    unsigned m_writes = 0;
};
