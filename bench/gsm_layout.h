// SPDX-License-Identifier: MIT
#pragma once

#include <gsm/gsm.h>

#include <cstdint>

// Turns a message's speech frame into libgsm's own layout, which .gsm files hold.
inline void ToGsmLayout(const uint8_t* frame, gsm_byte* gsm_layout) {
    static const gsm wav49 = [] {
        gsm state = gsm_create();
        int on = 1;
        gsm_option(state, GSM_OPT_WAV49, &on);
        return state;
    }();
    static const gsm plain = gsm_create();
    int index = 0;
    gsm_option(wav49, GSM_OPT_FRAME_INDEX, &index);
    gsm_signal parameters[76];
    gsm_explode(wav49, const_cast<gsm_byte*>(frame), parameters);
    gsm_implode(plain, parameters, gsm_layout);
}
