// SPDX-License-Identifier: MIT
#include "platform/sound/sound_drivers.h"

#include <mutex>
#include <utility>

#include "platform/framework/message_queue.h"

namespace {

std::mutex g_lock;
std::shared_ptr<WaveDriver> g_wave;
std::shared_ptr<MixerDriver> g_mixer;
MessagePoster g_post = &PostMessages;

}  // namespace

void SetSoundDrivers(std::shared_ptr<WaveDriver> wave, std::shared_ptr<MixerDriver> mixer) {
    // Those before end without the lock.
    const std::scoped_lock lock(g_lock);
    g_wave.swap(wave);
    g_mixer.swap(mixer);
}

std::shared_ptr<WaveDriver> CurrentWaveDriver() {
    const std::scoped_lock lock(g_lock);
    return g_wave;
}

std::shared_ptr<MixerDriver> CurrentMixerDriver() {
    const std::scoped_lock lock(g_lock);
    return g_mixer;
}

void SetSoundPoster(MessagePoster post) {
    g_post = post;
}

void PostSoundMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) {
    PostSoundMessages(hWnd, message, wParam, {&lParam, 1});
}

void PostSoundMessages(HWND hWnd, UINT message, WPARAM wParam, std::span<const LPARAM> lParams) {
    if (hWnd != nullptr) g_post(hWnd, message, wParam, lParams);
}
