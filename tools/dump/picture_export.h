// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "codec/message_format.h"
#include "codec/vdec.h"
#include "tools/dump/picture_output.h"

namespace tools {

// Where pictures go to, and how they are decoded.
struct PictureFolders {
    std::optional<std::string> png;
    std::optional<std::string> bgr;
    int quality = 3;
    unsigned threads = 1;
};

// Decodes video records on several threads into one or two folders. Pictures are written under their numbers,
// in any order. Operations throw ToolError, also for a picture of an earlier call.
class PictureExport {
public:
    // `rate`: the message's. A message of speech alone has no pictures, whatever its records hold.
    PictureExport(const PictureFolders& folders, int rate);
    ~PictureExport();
    PictureExport(const PictureExport&) = delete;
    PictureExport& operator=(const PictureExport&) = delete;

    // Copies the payload of picture `number`, from 0; waits while enough of them wait already.
    void Write(int64_t number, std::span<const uint8_t> payload);
    // Returns when all pictures have been written.
    void Close();

private:
    struct Job {
        unsigned number;
        size_t length;
        std::array<uint8_t, kMaxPayloadBytes> payload;
    };

    void Work(VdecDecoder& decoder);
    void WritePicture(unsigned number, std::span<const uint8_t, kPictureBytes> picture) const;
    void End();

    std::optional<PictureOutput> png_;
    std::optional<PictureOutput> bgr_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::unique_ptr<Job>> free_;
    std::vector<std::unique_ptr<Job>> waiting_;
    bool ending_ = false;
    std::exception_ptr failure_;
    std::vector<std::thread> workers_;
};

}  // namespace tools
