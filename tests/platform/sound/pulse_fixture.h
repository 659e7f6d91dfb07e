// SPDX-License-Identifier: MIT
// The system's sound on a server of the test's own, with pactl as the other program.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/sound/sound_drivers.h"
#include "platform/sound/system_sound.h"
#include "tests/platform/sound/posted_messages.h"
#include "tests/platform/sound/private_server.h"
#include "tests/platform/sound/wave_blocks.h"
#include "tests/support/watch.h"

class PulseSound : public testing::Test {
protected:
    PulseSound() {
        PrivateServer::UsePrivateFolders();
        PrivateServer::ForgetVolumes();
    }

    ~PulseSound() override { End(); }

    void Start() {
        m_server = std::make_unique<PrivateServer>();
        Connect();
    }

    // As at the start of the program.
    void Connect() {
        UseSystemSound();
        ASSERT_EQ(mixerGetNumDevs(), 1U);
        ASSERT_EQ(mixerOpen(&m_mixer, 0, reinterpret_cast<DWORD_PTR>(kWindow), 0, CALLBACK_WINDOW),
                  MMSYSERR_NOERROR);
    }

    // As at its end.
    void End() {
        CloseWave();
        mixerClose(m_mixer);
        SetSoundDrivers(nullptr, nullptr);
    }

    // Opens the output as the player does: paused, with blocks collecting.
    void OpenPaused() {
        ASSERT_EQ(OpenVoice(m_handle), MMSYSERR_NOERROR);
        waveOutPause(m_handle);
    }

    void CloseWave() {
        waveOutReset(m_handle);
        waveOutClose(m_handle);
        m_handle = nullptr;
    }

    void Write(std::size_t first, std::size_t last) {
        for (std::size_t i = first; i < last; ++i) ASSERT_EQ(m_blocks.Write(m_handle, i), MMSYSERR_NOERROR);
    }

    static MMRESULT Read(DWORD id, DWORD& value) { return CurrentMixerDriver()->GetValue(id, value); }
    static DWORD Value(DWORD id) {
        DWORD value = 0xFFFFFFFF;
        Read(id, value);
        return value;
    }
    static MMRESULT Set(DWORD id, DWORD value) { return CurrentMixerDriver()->SetValue(id, value); }

    // The number of the first stream, for pactl.
    static std::string Stream() {
        const std::string streams = Pactl({"list", "sink-inputs"});
        const std::size_t at = streams.find('#') + 1;
        return streams.substr(at, streams.find('\n') - at);
    }

    // Returns the number of its module, for pactl.
    static std::string AddSink(const std::string& name, const std::string& channels = "1") {
        std::string module =
            Pactl({"load-module", "module-null-sink", "sink_name=" + name, "norewinds=1",
                   "channels=" + channels, "rate=8000", "sink_properties=device.description=" + name});
        return module.substr(0, module.find('\n'));
    }

    // Starts a server with a second sink, which becomes the default one for the mixer to see. Returns the
    // sink's module. Now and then PipeWire's server, as long as it lives, tells no client of a new default:
    // then there is another server.
    std::string StartWithNewDefault(const std::string& sink, const std::string& channels = "1") {
        std::string module;
        for (int server = 0; server < (PrivateServer::IsPipeWire() ? 3 : 1) && Name() != sink; ++server) {
            End();
            m_server.reset();
            PrivateServer::ForgetVolumes();  // and the default that the last one was given
            Start();
            module = AddSink(sink, channels);
            EXPECT_EQ(Value(kMasterVolume), 65535U);
            m_posted.Take();
            Pactl({"set-default-sink", sink});
            watch::Eventually([&] { return Name() == sink; }, std::chrono::seconds(3));
        }
        EXPECT_EQ(Name(), sink);
        return module;
    }

    static std::string Name() {
        std::string name;
        if (const auto mixer = CurrentMixerDriver()) mixer->GetName(name);
        return name;
    }

    // Moves the first stream, as a person does. PipeWire's session manager overlooks the wish now and then.
    static bool MoveStream(const std::string& sink) {
        const std::string sinks = "\n" + Pactl({"list", "short", "sinks"});
        const std::size_t name = sinks.find("\t" + sink + "\t");
        const std::size_t line = sinks.rfind('\n', name) + 1;
        const std::string there = "\t" + sinks.substr(line, name - line) + "\t";
        return Eventually([&] {
            Pactl({"move-sink-input", Stream(), sink});
            return watch::Eventually(
                [&] {
                    return Pactl({"list", "short", "sink-inputs"}).find(there) != std::string::npos;
                },
                std::chrono::seconds(1));
        });
    }

    static bool Eventually(const std::function<bool()>& holds) {
        return watch::Eventually(holds, std::chrono::seconds(10));
    }

    // Whether the program comes to say all the parts.
    static bool EventuallySays(const std::vector<std::string>& words, const std::vector<std::string>& parts) {
        return Eventually([&] {
            const std::string said = Pactl(words);
            return std::all_of(parts.begin(), parts.end(),
                               [&](const std::string& part) { return said.find(part) != std::string::npos; });
        });
    }

    // Whether a change of the control is announced in time; everything announced is taken.
    bool Announced(DWORD id) {
        return Eventually([this, id] {
            for (const PostedMessage& posted : m_posted.Take())
                if (posted.message == MM_MIXM_CONTROL_CHANGE && posted.lParam == static_cast<LPARAM>(id))
                    return true;
            return false;
        });
    }

    PostedMessages m_posted;
    std::unique_ptr<PrivateServer> m_server;
    HMIXER m_mixer = nullptr;
    HWAVEOUT m_handle = nullptr;
    Blocks m_blocks{WAVEOUT_MAX_BLOCKS};  // ten seconds: longer than a server takes to start
};
