// SPDX-License-Identifier: MIT
#include "tools/dump/message_task.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "tools/dump/confinement.h"
#include "tools/dump/message_report.h"
#include "tools/dump/picture_export.h"
#include "tools/dump/report_json.h"
#include "tools/dump/sound_file_output.h"
#include "tools/dump/thumbnail.h"
#include "tools/export/message_feed.h"
#include "tools/export/save_message.h"
#include "tools/tool_error.h"

namespace tools {
namespace {

class MessageTask {
public:
    MessageTask(const DumpOptions& options, const std::string& path, unsigned threads, const TaskWatch& watch)
        : options_(options), path_(path), threads_(threads), watch_(watch) {}

    TaskResult Run() {
        try {
            if (options_.thumbnail) {
                WriteThumbnail(path_, *options_.thumbnail,
                               options_.thumbnail_size.value_or(DumpOptions::kThumbnailSize));
            } else {
                Treat();
            }
        } catch (const ToolError& error) {
            result_.complaints += std::string("trvdump: ") + error.what() + "\n";
            if (options_.AsJson()) result_.printed = ErrorAsJson(path_, error.what());
            result_.failed = true;
        }
        if (options_.json_lines) result_.printed = OnOneLine(result_.printed) + "\n";
        return result_;
    }

private:
    void Treat() {
        MessageFile message(path_);
        if (options_.messages.size() == 1 && !options_.Writes()) Confine(Reach::OpenFiles);
        const bool keep_pictures = options_.AsJson() || !options_.Writes();
        AddPasses();
        if (message.CanRewind() || !options_.Writes()) {
            report_ = ReportOn(message, keep_pictures, options_.range,
                               [this](double share) { watch_(options_.Writes() ? 0 : share, 0); });
            Warn();
            Write(message, true);
        } else {
            // What can be read once only is described while it is written.
            ReportBuilder builder(message, keep_pictures, options_.range);
            bool ended = false;
            message.Observe([&](const MessageRecord& record) {
                ended = ended || record.kind == MessageRecordKind::End;
                builder.Add(record);
            });
            Write(message, false);
            while (options_.AsJson() && !ended) message.Read();
            if (ended) report_ = builder.report();
            Warn();
        }
        if (options_.AsJson()) {
            result_.printed = ReportAsJson(*report_);
        } else if (!options_.Writes()) {
            result_.printed = ReportAsText(*report_);
        }
    }

    void Warn() {
        if (!options_.Writes() || !report_) return;
        for (const Warning& warning : report_->warnings)
            result_.complaints += "trvdump: " + path_ + ": warning: " + warning.text + "\n";
    }

    // Each output reads the message from its start.
    using Pass = std::function<void(MessageFile&, const SaveWatch&)>;
    void AddPasses() {
        AddSound("wav", options_.wav, FindSaveForm("wav"), true);
        AddSound("pcm", options_.pcm, nullptr, true);
        AddSound("audio", options_.audio, options_.audio_form, false);
        if (options_.WritesPictures()) {
            passes_.emplace_back(
                [this](MessageFile& message, const SaveWatch& watch) { WritePictures(message, watch); });
        }
        if (!options_.video) return;
        SaveRequest request;
        Prepare("video", *options_.video, options_.video_form, request);
        passes_.emplace_back([this, request](MessageFile& message, const SaveWatch& watch) mutable {
            if (report_) request.length = report_->length;
            SaveFilm(message, request, watch);
        });
    }

    void AddSound(const char* kind, const std::optional<std::string>& output, const SaveForm* form,
                  bool speech_alone) {
        if (!output) return;
        SoundRequest request;
        Prepare(kind, *output, form, request);
        request.speech_alone = speech_alone;
        request.make_output = [this, form, speech_alone](const SaveForm&,
                                                         OutputFile& file) -> std::unique_ptr<SoundOutput> {
            if (form == nullptr) return std::make_unique<RawSoundOutput>(file);
            if (form == FindSaveForm("wav"))
                return std::make_unique<WavSoundOutput>(file, SampleCount(speech_alone));
            return MakeSoundFileOutput(*form, file);
        };
        if (form == nullptr) request.form = FindSaveForm("wav");
        passes_.emplace_back(
            [request](MessageFile& message, const SaveWatch& watch) { SaveSound(message, request, watch); });
    }

    void Prepare(const char* kind, const std::string& output, const SaveForm* form,
                 SaveRequest& request) const {
        std::error_code error;
        request.output = OutputName(output, path_);
        request.form = form;
        request.range = options_.range;
        request.quality = options_.quality;
        request.threads = static_cast<int>(threads_);
        request.replace.force = options_.force;
        request.replace.command = std::string(kind) + " " + (form == nullptr ? "raw" : form->ending) + " " +
                                  std::to_string(options_.range.from) + " " +
                                  std::to_string(options_.range.to) + " " + std::to_string(options_.quality) +
                                  " " + std::filesystem::absolute(path_, error).string();
    }

    std::optional<uint64_t> SampleCount(bool speech_alone) const {
        if (!report_) return std::nullopt;
        const int64_t played = std::min(report_->length, options_.range.to) - options_.range.from;
        const uint64_t frames =
            speech_alone ? report_->frames_in_range : static_cast<uint64_t>(std::max<int64_t>(played, 0));
        return frames * kSpeechFrameSamples;
    }

    void Write(MessageFile& message, bool rewind) {
        const int64_t frames =
            std::min<int64_t>(message.frame_count(), options_.range.to) - options_.range.from;
        const double seconds = static_cast<double>(std::max<int64_t>(frames, 0) * kFrameMilliseconds) / 1000;
        double before = 0;
        const auto watch = [&](double share) {
            const double done = (before + share) / static_cast<double>(passes_.size());
            watch_(done, done * seconds);
        };
        for (const Pass& pass : passes_) {
            if (rewind) message.Rewind();
            rewind = true;
            pass(message, watch);
            before += 1;
        }
    }

    void WritePictures(MessageFile& message, const SaveWatch& watch) {
        PictureFolders folders;
        if (options_.png) folders.png = OutputName(*options_.png, path_);
        if (options_.bgr) folders.bgr = OutputName(*options_.bgr, path_);
        folders.quality = options_.quality;
        folders.threads = threads_;
        PictureExport pictures(folders, message.rate());
        if (options_.range.IsWhole()) {
            WriteAll(message, pictures, watch);
        } else {
            WriteSeen(message, pictures, watch);
        }
        pictures.Close();
    }

    // Also those that stand in the message too late to be seen.
    static void WriteAll(MessageFile& message, PictureExport& pictures, const SaveWatch& watch) {
        for (int64_t number = 0;;) {
            watch(message.ReadShare());
            const MessageRecord record = message.Read();
            if (record.kind == MessageRecordKind::End) return;
            if (record.kind == MessageRecordKind::Video) pictures.Write(number++, record.body);
        }
    }

    void WriteSeen(MessageFile& message, PictureExport& pictures, const SaveWatch& watch) const {
        if (message.rate() == 0) return;
        const int64_t period = PicturePeriodMilliseconds(message.rate());
        MessageFeed feed(message, options_.range, {.pictures = true}, [&] { watch(message.ReadShare()); });
        std::optional<int64_t> last;
        for (int64_t at = options_.range.from * kFrameMilliseconds; feed.LastsBeyond(at);
             at = (at / period + 1) * period) {
            const auto* const seen = feed.PictureAt(at);
            if (seen != nullptr && seen->number != last)
                pictures.Write(*(last = seen->number), seen->payload);
        }
    }

    const DumpOptions& options_;
    const std::string& path_;
    unsigned threads_;
    const TaskWatch& watch_;
    std::vector<Pass> passes_;
    std::optional<MessageReport> report_;
    TaskResult result_;
};

}  // namespace

TaskResult TreatMessage(const DumpOptions& options, const std::string& message, unsigned threads,
                        const TaskWatch& watch) {
    return MessageTask(options, message, threads, watch).Run();
}

}  // namespace tools
