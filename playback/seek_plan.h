// SPDX-License-Identifier: MIT
// How the reader comes to a place in a message. Pure. Speech has memory: kSpeechPrerollFrames are decoded and
// discarded before the first frame that is wanted.
#pragma once

#include <algorithm>
#include <cstdint>

#include "codec/message_index.h"
#include "codec/message_time.h"
#include "codec/speech_frame.h"

// Where a reader begins, and what it does with what it reads. As it stands: all of the message from its
// start, once the clock has the message's rate.
struct SeekPlan {
    int64_t nOffset = kMessageDataStart;  // of the first record read
    MessageClock clock;                   // there
    int64_t nTarget = 0;                  // the first frame to be heard
    int64_t nDecodeFrom = 0;              // speech before this frame is skipped
    int64_t nFirstPicture = 0;            // pictures before this one are skipped
    int64_t nTraceFrom = 0;               // from here on the levels before the target are wanted
    bool bShowFirst = false;              // the first picture is shown at once
    bool bNewDecoder = false;             // speech is decoded without the memory of what was decoded before
};

constexpr SeekPlan WholeMessage(int nRate) {
    SeekPlan plan;
    plan.clock = MessageClock(nRate);
    return plan;
}

// The first frame to be decoded when nTrace levels before the target are wanted.
constexpr int64_t FirstDecoded(int64_t nTarget, int nTrace) {
    return std::max<int64_t>(nTarget - nTrace - kSpeechPrerollFrames, 0);
}

// nTarget is the frame sought, of a message with nRate pictures per second. speech is a place at or before
// the record of FirstDecoded, picture one at or before the record of picture nPicture, which is to be seen at
// nTarget, or of the first one: nPicture is below 0 when none is to be seen yet.
constexpr SeekPlan PlanSeek(int nRate, int64_t nTarget, int nTrace, const MessagePlace& speech,
                            int64_t nPicture, const MessagePlace& picture) {
    const MessagePlace& first = nRate != 0 && picture.offset < speech.offset ? picture : speech;
    SeekPlan plan;
    plan.nOffset = first.offset;
    plan.clock = MessageClock(nRate, first.frame, first.pictures);
    plan.nTarget = nTarget;
    plan.nDecodeFrom = FirstDecoded(nTarget, nTrace);
    plan.nTraceFrom = nTarget - nTrace;
    plan.nFirstPicture = std::max<int64_t>(nPicture, 0);
    plan.bShowFirst = nPicture >= 0;
    plan.bNewDecoder = true;
    return plan;
}
