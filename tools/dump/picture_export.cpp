// SPDX-License-Identifier: MIT
#include "tools/dump/picture_export.h"

#include <algorithm>
#include <new>

namespace tools {
namespace {

constexpr unsigned kMostWorkers = 16;

struct DestroyDecoder {
    void operator()(VdecDecoder* decoder) const { vdec_destroy(decoder); }
};
using Decoder = std::unique_ptr<VdecDecoder, DestroyDecoder>;

}  // namespace

PictureExport::PictureExport(const PictureFolders& folders, int rate) {
    if (folders.png) png_.emplace(*folders.png, PictureOutput::Format::Png);
    if (folders.bgr) bgr_.emplace(*folders.bgr, PictureOutput::Format::Bgr);
    if (rate == 0) return;
    const unsigned count = std::clamp(folders.threads, 1U, kMostWorkers);
    for (unsigned i = 0; i < 2 * count; ++i) free_.push_back(std::make_unique<Job>());
    waiting_.reserve(free_.size());
    try {
        for (unsigned i = 0; i < count; ++i) {
            Decoder decoder(vdec_create());
            if (!decoder || !vdec_set_quality(*decoder, static_cast<signed char>(folders.quality)))
                throw std::bad_alloc();
            workers_.emplace_back([this, own = std::move(decoder)] { Work(*own); });
        }
    } catch (...) {
        End();
        throw;
    }
}

PictureExport::~PictureExport() {
    End();
}

void PictureExport::Write(int64_t number, std::span<const uint8_t> payload) {
    if (workers_.empty()) return;
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !free_.empty() || failure_; });
    if (failure_) std::rethrow_exception(failure_);
    std::unique_ptr<Job> job = std::move(free_.back());
    free_.pop_back();
    job->number = static_cast<unsigned>(number + 1);
    job->length = payload.size();
    std::copy(payload.begin(), payload.end(), job->payload.begin());
    waiting_.push_back(std::move(job));
    changed_.notify_all();
}

void PictureExport::Close() {
    End();
    if (failure_) std::rethrow_exception(failure_);
}

// Workers finish what waits, unless one of them failed.
void PictureExport::End() {
    {
        const std::scoped_lock lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    for (std::thread& worker : workers_) worker.join();
    workers_.clear();
}

void PictureExport::Work(VdecDecoder& decoder) {
    std::vector<uint8_t> picture(kPictureBytes);
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return !waiting_.empty() || ending_ || failure_; });
        if (failure_ || waiting_.empty()) return;
        std::unique_ptr<Job> job = std::move(waiting_.front());
        waiting_.erase(waiting_.begin());
        lock.unlock();
        std::exception_ptr failure;
        try {
            vdec_decode(decoder, job->payload.data(), job->length, picture.data());
            WritePicture(job->number, std::span<const uint8_t, kPictureBytes>(picture));
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        if (failure && !failure_) failure_ = failure;
        free_.push_back(std::move(job));
        changed_.notify_all();
    }
}

void PictureExport::WritePicture(unsigned number, std::span<const uint8_t, kPictureBytes> picture) const {
    if (png_) png_->Write(number, picture);
    if (bgr_) bgr_->Write(number, picture);
}

}  // namespace tools
