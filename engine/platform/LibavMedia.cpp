#include "LibavMedia.hpp"

#include <cmath>
#include <cstring>
#include <fmt/format.h>
#include <vector>

extern "C" {
#include <libavutil/imgutils.h>
}

namespace brevant::platform::libav {

namespace {

// libav would otherwise print its own warnings on standard error, in the
// middle of a progress line.
void quietLogs() {
    static const bool quieted = [] {
        av_log_set_level(AV_LOG_QUIET);
        return true;
    }();
    (void)quieted;
}

} // namespace

std::string errorText(int code) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return text.data();
}

std::expected<Input, std::string> Input::open(const std::string& path) {
    quietLogs();
    auto file = ReadOnlyFile::open(path);
    if (!file) {
        return std::unexpected(platform::errorText(file.error()));
    }
    // The descriptor's own entry, so libav reads the file opened above and
    // nothing a link may point to since.
    std::string own = fmt::format("file:/proc/self/fd/{}", file->descriptor());
    AVFormatContext* raw = nullptr;
    if (int error = avformat_open_input(&raw, own.c_str(), nullptr, nullptr); error < 0) {
        return std::unexpected(errorText(error));
    }
    std::unique_ptr<AVFormatContext, FormatInputCloser> format(raw);
    if (int error = avformat_find_stream_info(format.get(), nullptr); error < 0) {
        return std::unexpected(errorText(error));
    }
    return Input(std::move(*file), std::move(format));
}

std::optional<int> Input::videoStream() const {
    int index = av_find_best_stream(format_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0) {
        return std::nullopt;
    }
    // A cover picture is not the video.
    if ((format_->streams[index]->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) {
        return std::nullopt;
    }
    return index;
}

std::expected<CodecContext, std::string> Input::decoder(int stream, int threads) const {
    const AVCodecParameters* parameters = format_->streams[stream]->codecpar;
    const AVCodec* codec = avcodec_find_decoder(parameters->codec_id);
    if (codec == nullptr) {
        return std::unexpected(fmt::format("no decoder for {} on this computer",
                                           avcodec_get_name(parameters->codec_id)));
    }
    CodecContext context(avcodec_alloc_context3(codec));
    if (!context) {
        return std::unexpected(errorText(AVERROR(ENOMEM)));
    }
    if (int error = avcodec_parameters_to_context(context.get(), parameters); error < 0) {
        return std::unexpected(errorText(error));
    }
    context->thread_count = threads;
    context->pkt_timebase = format_->streams[stream]->time_base;
    if (int error = avcodec_open2(context.get(), codec, nullptr); error < 0) {
        return std::unexpected(errorText(error));
    }
    return context;
}

std::optional<std::array<std::int32_t, 9>> displayMatrix(const AVStream* stream) {
    std::size_t size = 0;
    const std::uint8_t* data = av_stream_get_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (data == nullptr || size < sizeof(std::int32_t) * 9) {
        return std::nullopt;
    }
    std::array<std::int32_t, 9> matrix{};
    std::memcpy(matrix.data(), data, sizeof(std::int32_t) * 9);
    return matrix;
}

int clockwiseRotation(const AVStream* stream) {
    auto matrix = displayMatrix(stream);
    if (!matrix) {
        return 0;
    }
    // av_display_rotation_get answers counter-clockwise degrees.
    double counterClockwise = av_display_rotation_get(matrix->data());
    if (std::isnan(counterClockwise)) {
        return 0;
    }
    long quarter = std::lround(-counterClockwise / 90.0);
    return static_cast<int>(((quarter % 4) + 4) % 4) * 90;
}

double seconds(std::int64_t time, AVRational base) {
    return static_cast<double>(time) * av_q2d(base);
}

double streamSeconds(const AVFormatContext* format, const AVStream* stream) {
    if (stream->duration != AV_NOPTS_VALUE && stream->duration > 0) {
        return seconds(stream->duration, stream->time_base);
    }
    if (format->duration != AV_NOPTS_VALUE && format->duration > 0) {
        return static_cast<double>(format->duration) / AV_TIME_BASE;
    }
    return 0;
}

std::optional<RgbImage> rgbOf(const AVFrame* frame) {
    if (frame->width < 1 || frame->height < 1) {
        return std::nullopt;
    }
    Scaler scaler(sws_getContext(
        frame->width, frame->height, static_cast<AVPixelFormat>(frame->format), frame->width,
        frame->height, AV_PIX_FMT_RGB24, SWS_BICUBIC, nullptr, nullptr, nullptr));
    if (!scaler) {
        return std::nullopt;
    }
    RgbImage image{frame->width, frame->height, {}};
    image.samples.resize(static_cast<std::size_t>(frame->width) * frame->height * 3);
    std::array<std::uint8_t*, 4> planes{image.samples.data(), nullptr, nullptr, nullptr};
    std::array<int, 4> strides{frame->width * 3, 0, 0, 0};
    sws_scale(scaler.get(), frame->data, frame->linesize, 0, frame->height, planes.data(),
              strides.data());
    return image;
}

} // namespace brevant::platform::libav
