// SPDX-License-Identifier: MIT
#pragma once

// Told by a CWaveDevice about its blocks, on the UI thread, with no lock held.
class CWaveClient {
public:
    virtual ~CWaveClient() = default;
    // A recorded block is ready. A playing device never calls it.
    virtual void OnWaveInData() {}
    // One queued block has been heard to its end. It stood for so many of the samples written.
    virtual void OnBlockPlayed(int /*nSamples*/) {}
    // A call begins: others are to be silent until it ends. Either may come at any time, also while paused.
    virtual void OnCallBegins() {}
    virtual void OnCallEnds() {}
    // What was listened to in private, headphones or a device that is gone, plays no more; others now hear.
    virtual void OnUnplugged() {}
};
