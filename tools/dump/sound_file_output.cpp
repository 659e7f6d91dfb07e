// SPDX-License-Identifier: MIT
#include "tools/dump/sound_file_output.h"

#include <sndfile.h>

#include <algorithm>
#include <exception>
#include <string_view>
#include <utility>

#include "codec/message_format.h"
#include "tools/tool_error.h"

namespace tools {
namespace {

struct LibraryForm {
    std::string_view ending;
    int format;
    double compression;  // the library's measure, 0 to 1, the more the smaller
};
constexpr LibraryForm kForms[] = {
    {"flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 0.625},
    {"opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, 0.928},  // 24 kbit/s, of 6 to 256
    {"ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 0.7},
    {"mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 0.6},
};

class SoundFileOutput : public SoundOutput {
public:
    SoundFileOutput(const LibraryForm& form, OutputFile& file) : file_(file) {
        SF_INFO info = Info(form);
        SF_VIRTUAL_IO access = {&Length, &Seek, &ReadNothing, &WriteBytes, &Tell};
        sound_.reset(sf_open_virtual(&access, SFM_WRITE, &info, this));
        Check();
        if (!sound_) throw ToolError(file.name() + ": cannot be written: " + sf_strerror(nullptr));
        double compression = form.compression;
        sf_command(sound_.get(), SFC_SET_COMPRESSION_LEVEL, &compression, sizeof compression);
    }

    static SF_INFO Info(const LibraryForm& form) {
        SF_INFO info{};
        info.samplerate = kSpeechSampleRate;
        info.channels = 1;
        info.format = form.format;
        return info;
    }

    void Write(std::span<const int16_t> samples) override {
        const sf_count_t count = std::ssize(samples);
        const bool whole = sf_write_short(sound_.get(), samples.data(), count) == count;
        Check();
        if (!whole) throw ToolError(file_.name() + ": cannot be written: " + sf_strerror(sound_.get()));
    }

    void Finish() override {
        const int error = sf_close(sound_.release());
        Check();
        if (error != 0) throw ToolError(file_.name() + ": cannot be written: " + sf_error_number(error));
        file_.Finish();
    }

private:
    struct Close {
        void operator()(SNDFILE* sound) const { sf_close(sound); }
    };

    // No exception crosses the library.
    void Check() {
        if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
    }

    static SoundFileOutput& Self(void* user) { return *static_cast<SoundFileOutput*>(user); }
    static sf_count_t Length(void* user) { return Self(user).length_; }
    static sf_count_t Tell(void* user) { return Self(user).at_; }
    static sf_count_t ReadNothing(void*, sf_count_t, void*) { return 0; }
    static sf_count_t Seek(sf_count_t offset, int whence, void* user) {
        SoundFileOutput& self = Self(user);
        if (whence == SEEK_CUR) offset += self.at_;
        if (whence == SEEK_END) offset += self.length_;
        return self.at_ = std::clamp<sf_count_t>(offset, 0, self.length_);
    }
    // What would change a pipe's past, a header that has become known, is left as it was.
    static sf_count_t WriteBytes(const void* bytes, sf_count_t count, void* user) {
        SoundFileOutput& self = Self(user);
        const std::span<const uint8_t> all(static_cast<const uint8_t*>(bytes),
                                           static_cast<std::size_t>(count));
        const auto old = static_cast<std::size_t>(std::min(self.length_ - self.at_, count));
        try {
            if (self.failure_) return 0;
            if (old > 0 && self.file_.can_go_back())
                self.file_.Overwrite(static_cast<long>(self.at_), all.first(old));
            if (all.size() > old) self.file_.Write(all.subspan(old));
        } catch (...) {
            self.failure_ = std::current_exception();
            return 0;
        }
        self.at_ += count;
        self.length_ = std::max(self.length_, self.at_);
        return count;
    }

    OutputFile& file_;
    sf_count_t length_ = 0;
    sf_count_t at_ = 0;
    std::exception_ptr failure_;
    std::unique_ptr<SNDFILE, Close> sound_;  // goes before what it writes to
};

const LibraryForm* FindForm(const SaveForm& form) {
    const auto* const found =
        std::find_if(std::begin(kForms), std::end(kForms),
                     [&](const LibraryForm& known) { return known.ending == form.ending; });
    if (found == std::end(kForms)) return nullptr;
    const SF_INFO info = SoundFileOutput::Info(*found);
    return sf_format_check(&info) == 0 ? nullptr : found;
}

}  // namespace

bool IsLibraryForm(const SaveForm& form) {
    return FindForm(form) != nullptr;
}

std::unique_ptr<SoundOutput> MakeSoundFileOutput(const SaveForm& form, OutputFile& file) {
    const LibraryForm* const found = FindForm(form);
    return found == nullptr ? nullptr : std::make_unique<SoundFileOutput>(*found, file);
}

}  // namespace tools
