#include "VideoDecoding.hpp"

#include "engine/platform/LibavMedia.hpp"

#include <algorithm>

namespace brevant::platform {

namespace {

using libav::Frame;
using libav::Packet;

// Seconds from the stream's start to the frame's start.
double frameTime(const AVStream* stream, const AVFrame* frame) {
    std::int64_t start = stream->start_time == AV_NOPTS_VALUE ? 0 : stream->start_time;
    std::int64_t pts =
        frame->best_effort_timestamp == AV_NOPTS_VALUE ? frame->pts : frame->best_effort_timestamp;
    return libav::seconds(pts - start, stream->time_base);
}

// How long the frame is shown: its packet's duration, else one frame at the
// stream's rate.
double frameLength(const AVStream* stream, const AVFrame* frame) {
    if (frame->pkt_duration > 0) {
        return libav::seconds(frame->pkt_duration, stream->time_base);
    }
    AVRational rate = stream->avg_frame_rate;
    return rate.num > 0 && rate.den > 0 ? av_q2d(av_inv_q(rate)) : 0;
}

std::optional<DecodedImage> imageOf(const AVFrame* frame) {
    auto rgb = libav::rgbOf(frame);
    if (!rgb) {
        return std::nullopt;
    }
    return DecodedImage::fromPixels(rgb->samples, rgb->width, rgb->height, 3);
}

// Reads the video stream's frames one by one, counting what goes wrong.
class FrameReader {
public:
    static std::expected<FrameReader, std::string> open(const std::string& path, bool strict) {
        auto input = libav::Input::open(path);
        if (!input) {
            return std::unexpected(input.error());
        }
        auto index = input->videoStream();
        if (!index) {
            return std::unexpected(std::string("it holds no video"));
        }
        auto decoder = input->decoder(*index, 0);
        if (!decoder) {
            return std::unexpected(decoder.error());
        }
        if (strict) {
            (*decoder)->err_recognition |= AV_EF_EXPLODE | AV_EF_CRCCHECK | AV_EF_BITSTREAM;
        }
        return FrameReader(std::move(*input), *index, std::move(*decoder));
    }

    [[nodiscard]] const AVStream* stream() const { return input_.format()->streams[index_]; }

    // Seeks to the key frame at or before `seconds`.
    void seek(double seconds) {
        const AVStream* video = stream();
        std::int64_t start = video->start_time == AV_NOPTS_VALUE ? 0 : video->start_time;
        auto target = start + static_cast<std::int64_t>(seconds / av_q2d(video->time_base));
        if (av_seek_frame(input_.format(), index_, target, AVSEEK_FLAG_BACKWARD) >= 0) {
            avcodec_flush_buffers(decoder_.get());
        }
    }

    // The next frame; nothing at the end.
    AVFrame* next() {
        for (;;) {
            int received = avcodec_receive_frame(decoder_.get(), frame_.get());
            if (received == 0) {
                if (frame_->decode_error_flags != 0 ||
                    (frame_->flags & AV_FRAME_FLAG_CORRUPT) != 0) {
                    ++errors_;
                }
                return frame_.get();
            }
            if (received == AVERROR_EOF) {
                return nullptr;
            }
            if (received != AVERROR(EAGAIN)) {
                ++errors_;
            }
            if (!feed()) {
                return nullptr;
            }
        }
    }

    [[nodiscard]] int errors() const { return errors_; }

private:
    FrameReader(libav::Input input, int index, libav::CodecContext decoder)
        : input_(std::move(input))
        , index_(index)
        , decoder_(std::move(decoder))
        , frame_(av_frame_alloc())
        , packet_(av_packet_alloc()) {}

    // Gives the decoder the next packet of the stream, or the end; false
    // when the end was given already.
    bool feed() {
        if (ended_) {
            return false;
        }
        for (;;) {
            int read = av_read_frame(input_.format(), packet_.get());
            if (read < 0) {
                if (read != AVERROR_EOF) {
                    ++errors_;
                }
                ended_ = true;
                avcodec_send_packet(decoder_.get(), nullptr);
                return true;
            }
            if (packet_->stream_index != index_) {
                av_packet_unref(packet_.get());
                continue;
            }
            if ((packet_->flags & AV_PKT_FLAG_CORRUPT) != 0) {
                ++errors_;
            }
            int sent = avcodec_send_packet(decoder_.get(), packet_.get());
            av_packet_unref(packet_.get());
            if (sent < 0 && sent != AVERROR(EAGAIN)) {
                ++errors_;
            }
            return true;
        }
    }

    libav::Input input_;
    int index_ = -1;
    libav::CodecContext decoder_;
    Frame frame_;
    Packet packet_;
    int errors_ = 0;
    bool ended_ = false;
};

} // namespace

std::expected<DecodedVideo, std::string> VideoDecoding::decodeAll(const std::string& path,
                                                                  double frameAtSeconds) {
    auto reader = FrameReader::open(path, true);
    if (!reader) {
        return std::unexpected(reader.error());
    }
    DecodedVideo video;
    double first = 0;
    double end = 0;
    while (AVFrame* frame = reader->next()) {
        double time = frameTime(reader->stream(), frame);
        double length = frameLength(reader->stream(), frame);
        if (video.frames == 0) {
            first = time;
        }
        end = std::max(end, time + length);
        if (!video.frame && time + 1e-6 >= frameAtSeconds) {
            video.frame = imageOf(frame);
        }
        ++video.frames;
    }
    video.errors = reader->errors();
    video.durationSeconds = video.frames > 0 ? end - first : 0;
    return video;
}

std::expected<DecodedImage, std::string> VideoDecoding::frameAt(const std::string& path,
                                                                double seconds) {
    auto reader = FrameReader::open(path, false);
    if (!reader) {
        return std::unexpected(reader.error());
    }
    reader->seek(seconds);
    while (AVFrame* frame = reader->next()) {
        if (frameTime(reader->stream(), frame) + 1e-6 >= seconds) {
            if (auto image = imageOf(frame)) {
                return std::move(*image);
            }
            break;
        }
    }
    return std::unexpected(std::string("no picture could be decoded there"));
}

} // namespace brevant::platform
