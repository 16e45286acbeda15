#pragma once

// The libav* side of the video code, for the platform layer's own files only.

#include "engine/platform/ReadOnlyFile.hpp"

#include <array>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libswscale/swscale.h>
}

namespace brevant::platform::libav {

struct FormatInputCloser {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};

struct CodecContextFreer {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};

struct FrameFreer {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};

struct PacketFreer {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

struct ScalerFreer {
    void operator()(SwsContext* context) const { sws_freeContext(context); }
};

using CodecContext = std::unique_ptr<AVCodecContext, CodecContextFreer>;
using Frame = std::unique_ptr<AVFrame, FrameFreer>;
using Packet = std::unique_ptr<AVPacket, PacketFreer>;
using Scaler = std::unique_ptr<SwsContext, ScalerFreer>;

// libav's error code as text.
[[nodiscard]] std::string errorText(int code);

// A media file opened for reading: never through a final symbolic link (the
// file is opened first, libav reads it through /proc/self/fd), its streams'
// facts read.
class Input {
public:
    [[nodiscard]] static std::expected<Input, std::string> open(const std::string& path);

    [[nodiscard]] AVFormatContext* format() const { return format_.get(); }

    // The best video stream's index; nothing when there is none.
    [[nodiscard]] std::optional<int> videoStream() const;

    // A decoder opened for the stream, with `threads` threads (0: libav's
    // choice).
    [[nodiscard]] std::expected<CodecContext, std::string> decoder(int stream, int threads) const;

private:
    Input(ReadOnlyFile file, std::unique_ptr<AVFormatContext, FormatInputCloser> format)
        : file_(std::move(file))
        , format_(std::move(format)) {}

    ReadOnlyFile file_;
    std::unique_ptr<AVFormatContext, FormatInputCloser> format_;
};

// The stream's display matrix, when it has one.
[[nodiscard]] std::optional<std::array<std::int32_t, 9>> displayMatrix(const AVStream* stream);

// The quarter turns clockwise the display matrix asks for: 0, 90, 180 or 270.
[[nodiscard]] int clockwiseRotation(const AVStream* stream);

// Stream time in seconds.
[[nodiscard]] double seconds(std::int64_t time, AVRational base);

// The stream's duration in seconds: its own, else the container's.
[[nodiscard]] double streamSeconds(const AVFormatContext* format, const AVStream* stream);

// One frame as 8-bit RGB, rows without padding.
struct RgbImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> samples;
};

// The frame converted to RGB at its own size.
[[nodiscard]] std::optional<RgbImage> rgbOf(const AVFrame* frame);

} // namespace brevant::platform::libav
