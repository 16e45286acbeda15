#include "VideoTranscoder.hpp"

#include "engine/platform/LibavMedia.hpp"
#include "engine/platform/NewFile.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fmt/format.h>
#include <map>
#include <optional>
#include <vector>

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace brevant::platform {

namespace {

using libav::CodecContext;
using libav::errorText;
using libav::Frame;
using libav::Packet;
using libav::Scaler;

constexpr int kIoBufferSize = 1 << 16;
// HEVC's own tag, which Apple's players require of MP4 and QuickTime files.
constexpr std::uint32_t kHvc1 = MKTAG('h', 'v', 'c', '1');

struct ResamplerFreer {
    void operator()(SwrContext* context) const { swr_free(&context); }
};

struct FifoFreer {
    void operator()(AVAudioFifo* fifo) const { av_audio_fifo_free(fifo); }
};

using Resampler = std::unique_ptr<SwrContext, ResamplerFreer>;
using Fifo = std::unique_ptr<AVAudioFifo, FifoFreer>;

// The container the copy is written in: MP4 for an MP4 (libav reads MOV,
// MP4 and M4V with one demuxer; the brand tells them apart), QuickTime for
// everything else.
const char* muxerFor(const AVFormatContext* input) {
    std::string_view name = input->iformat->name;
    const AVDictionaryEntry* brand = av_dict_get(input->metadata, "major_brand", nullptr, 0);
    if (name.find("mp4") == std::string_view::npos || brand == nullptr ||
        std::string_view(brand->value).starts_with("qt")) {
        return "mov";
    }
    return "mp4";
}

// The copy's file behind libav's writes: created exclusively, written at
// libav's positions (MP4 goes back to finish its header).
class Output {
public:
    static std::expected<std::unique_ptr<Output>, std::string>
    create(const std::string& path, mode_t permissions, const char* muxer) {
        auto file = NewFile::create(path, permissions);
        if (!file) {
            return std::unexpected(platform::errorText(file.error()));
        }
        std::unique_ptr<Output> output(new Output(std::move(*file)));
        if (int error = avformat_alloc_output_context2(&output->format_, nullptr, muxer, nullptr);
            error < 0) {
            return std::unexpected(errorText(error));
        }
        auto* buffer = static_cast<std::uint8_t*>(av_malloc(kIoBufferSize));
        output->io_ = avio_alloc_context(buffer, kIoBufferSize, 1, output.get(), nullptr,
                                         &Output::writePacket, &Output::seekTo);
        if (output->io_ == nullptr) {
            av_free(buffer);
            return std::unexpected(errorText(AVERROR(ENOMEM)));
        }
        output->format_->pb = output->io_;
        output->format_->flags |= AVFMT_FLAG_CUSTOM_IO;
        return output;
    }

    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    Output(Output&&) = delete;
    Output& operator=(Output&&) = delete;

    ~Output() {
        if (format_ != nullptr) {
            avformat_free_context(format_);
        }
        if (io_ != nullptr) {
            av_freep(static_cast<void*>(&io_->buffer));
            avio_context_free(&io_);
        }
    }

    [[nodiscard]] AVFormatContext* format() const { return format_; }

    // Everything libav buffered written, then forced to the device.
    std::expected<void, std::string> finish() {
        avio_flush(io_);
        if (io_->error < 0) {
            return std::unexpected(errorText(io_->error));
        }
        if (auto synced = file_.sync(); !synced) {
            return std::unexpected(platform::errorText(synced.error()));
        }
        return {};
    }

private:
    explicit Output(NewFile file)
        : file_(std::move(file)) {}

    static int writePacket(void* opaque, std::uint8_t* data, int size) {
        auto* output = static_cast<Output*>(opaque);
        auto written = output->file_.write({data, static_cast<std::size_t>(size)});
        return written ? size : AVERROR(written.error());
    }

    static std::int64_t seekTo(void* opaque, std::int64_t offset, int whence) {
        auto* output = static_cast<Output*>(opaque);
        if ((whence & AVSEEK_SIZE) != 0) {
            return -1;
        }
        auto position = output->file_.seek(offset, whence & ~AVSEEK_FORCE);
        return position ? *position : AVERROR(position.error());
    }

    NewFile file_;
    AVFormatContext* format_ = nullptr;
    AVIOContext* io_ = nullptr;
};

// One sound stream on its way: copied as it is, or made AAC.
struct SoundRoute {
    AVStream* input = nullptr;
    AVStream* output = nullptr;
    CodecContext decoder;
    CodecContext encoder;
    Resampler resampler;
    Fifo fifo;
    std::int64_t nextPts = AV_NOPTS_VALUE;
};

void copyStreamMetadata(const AVStream* from, AVStream* to) {
    av_dict_copy(&to->metadata, from->metadata, 0);
    // Said anew by what wrote the copy.
    av_dict_set(&to->metadata, "encoder", nullptr, 0);
}

// The container's metadata, dates and location among them; the brands and
// the writer's name are the new file's own.
void copyContainerMetadata(const AVFormatContext* from, AVFormatContext* to,
                           AVDictionary** options) {
    av_dict_copy(&to->metadata, from->metadata, 0);
    for (const char* own : {"major_brand", "minor_version", "compatible_brands", "encoder"}) {
        av_dict_set(&to->metadata, own, nullptr, 0);
    }
    // Apple's own keys ("com.apple.quicktime.location.ISO6709") survive only
    // as metadata tags of their own.
    if (av_dict_get(from->metadata, "com.apple.quicktime.", nullptr, AV_DICT_IGNORE_SUFFIX) !=
        nullptr) {
        av_dict_set(options, "movflags", "use_metadata_tags", 0);
    }
}

class Transcode {
public:
    Transcode(libav::Input input, std::unique_ptr<Output> output, const VideoEncoding& encoding,
              const VideoTranscoder::Progress& progress)
        : input_(std::move(input))
        , output_(std::move(output))
        , encoding_(encoding)
        , progress_(progress) {}

    std::expected<VideoTranscoder::Written, std::string> run() {
        if (auto ready = prepare(); !ready) {
            return std::unexpected(ready.error());
        }
        if (auto copied = copyAll(); !copied) {
            return std::unexpected(copied.error());
        }
        if (int error = av_write_trailer(output_->format()); error < 0) {
            return std::unexpected(errorText(error));
        }
        if (auto finished = output_->finish(); !finished) {
            return std::unexpected(finished.error());
        }
        return VideoTranscoder::Written{frames_, encoder_->width, encoder_->height};
    }

private:
    std::expected<void, std::string> prepare() {
        auto index = input_.videoStream();
        if (!index) {
            return std::unexpected(std::string("it holds no video"));
        }
        videoIndex_ = *index;
        auto decoder = input_.decoder(videoIndex_, 0);
        if (!decoder) {
            return std::unexpected(decoder.error());
        }
        decoder_ = std::move(*decoder);
        if (auto opened = openVideoEncoder(); !opened) {
            return opened;
        }
        if (encoding_.keepSound) {
            for (unsigned i = 0; i < input_.format()->nb_streams; ++i) {
                AVStream* stream = input_.format()->streams[i];
                if (stream->codecpar->codec_type != AVMEDIA_TYPE_AUDIO) {
                    continue;
                }
                if (auto routed = routeSound(stream); !routed) {
                    return routed;
                }
            }
        }
        AVDictionary* options = nullptr;
        copyContainerMetadata(input_.format(), output_->format(), &options);
        int error = avformat_write_header(output_->format(), &options);
        av_dict_free(&options);
        if (error < 0) {
            return std::unexpected(errorText(error));
        }
        return {};
    }

    std::expected<void, std::string> openVideoEncoder() {
        const AVCodec* x265 = avcodec_find_encoder_by_name("libx265");
        if (x265 == nullptr) {
            return std::unexpected(std::string("this computer's libavcodec has no x265 encoder"));
        }
        AVStream* input = input_.format()->streams[videoIndex_];
        VideoTranscoder::Size size =
            VideoTranscoder::targetSize(decoder_->width, decoder_->height, encoding_);
        encoder_.reset(avcodec_alloc_context3(x265));
        encoder_->width = size.width;
        encoder_->height = size.height;
        encoder_->pix_fmt = AV_PIX_FMT_YUV420P;
        encoder_->sample_aspect_ratio = decoder_->sample_aspect_ratio;
        encoder_->time_base = input->time_base;
        encoder_->framerate = av_guess_frame_rate(input_.format(), input, nullptr);
        encoder_->color_range = decoder_->color_range;
        encoder_->color_primaries = decoder_->color_primaries;
        encoder_->color_trc = decoder_->color_trc;
        encoder_->colorspace = decoder_->colorspace;
        if ((output_->format()->oformat->flags & AVFMT_GLOBALHEADER) != 0) {
            encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        }
        AVDictionary* options = nullptr;
        av_dict_set(&options, "preset", encoding_.preset.c_str(), 0);
        av_dict_set_int(&options, "crf", encoding_.crf, 0);
        av_dict_set(&options, "x265-params",
                    encoding_.lossless ? "log-level=none:lossless=1" : "log-level=none", 0);
        int error = avcodec_open2(encoder_.get(), x265, &options);
        av_dict_free(&options);
        if (error < 0) {
            return std::unexpected(errorText(error));
        }
        videoOut_ = avformat_new_stream(output_->format(), nullptr);
        avcodec_parameters_from_context(videoOut_->codecpar, encoder_.get());
        videoOut_->codecpar->codec_tag = kHvc1;
        videoOut_->time_base = encoder_->time_base;
        videoOut_->avg_frame_rate = encoder_->framerate;
        copyStreamMetadata(input, videoOut_);
        if (auto matrix = libav::displayMatrix(input)) {
            std::uint8_t* data =
                av_stream_new_side_data(videoOut_, AV_PKT_DATA_DISPLAYMATRIX, sizeof(*matrix));
            if (data != nullptr) {
                std::memcpy(data, matrix->data(), sizeof(*matrix));
            }
        }
        return {};
    }

    std::expected<void, std::string> routeSound(AVStream* input) {
        SoundRoute route{.input = input};
        route.output = avformat_new_stream(output_->format(), nullptr);
        copyStreamMetadata(input, route.output);
        route.output->disposition = input->disposition;
        int fits = avformat_query_codec(output_->format()->oformat, input->codecpar->codec_id,
                                        FF_COMPLIANCE_NORMAL);
        if (fits == 1) {
            avcodec_parameters_copy(route.output->codecpar, input->codecpar);
            route.output->codecpar->codec_tag = 0;
            route.output->time_base = input->time_base;
        } else if (auto opened = openSoundEncoder(route); !opened) {
            return opened;
        }
        routes_.emplace(input->index, std::move(route));
        return {};
    }

    // Sound the container cannot hold as it is becomes AAC at the same
    // rate and channels.
    std::expected<void, std::string> openSoundEncoder(SoundRoute& route) {
        auto decoder = input_.decoder(route.input->index, 1);
        if (!decoder) {
            return std::unexpected(decoder.error());
        }
        route.decoder = std::move(*decoder);
        const AVCodec* aac = avcodec_find_encoder(AV_CODEC_ID_AAC);
        route.encoder.reset(avcodec_alloc_context3(aac));
        AVCodecContext* encoder = route.encoder.get();
        encoder->sample_fmt = AV_SAMPLE_FMT_FLTP;
        encoder->sample_rate = route.decoder->sample_rate;
        av_channel_layout_copy(&encoder->ch_layout, &route.decoder->ch_layout);
        encoder->time_base = AVRational{1, encoder->sample_rate};
        if ((output_->format()->oformat->flags & AVFMT_GLOBALHEADER) != 0) {
            encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        }
        if (int error = avcodec_open2(encoder, aac, nullptr); error < 0) {
            return std::unexpected(errorText(error));
        }
        avcodec_parameters_from_context(route.output->codecpar, encoder);
        route.output->time_base = encoder->time_base;
        SwrContext* resampler = nullptr;
        if (int error = swr_alloc_set_opts2(&resampler, &encoder->ch_layout, encoder->sample_fmt,
                                            encoder->sample_rate, &route.decoder->ch_layout,
                                            route.decoder->sample_fmt, route.decoder->sample_rate,
                                            0, nullptr);
            error < 0) {
            return std::unexpected(errorText(error));
        }
        route.resampler.reset(resampler);
        if (int error = swr_init(resampler); error < 0) {
            return std::unexpected(errorText(error));
        }
        route.fifo.reset(av_audio_fifo_alloc(encoder->sample_fmt, encoder->ch_layout.nb_channels,
                                             encoder->frame_size));
        return {};
    }

    std::expected<void, std::string> copyAll() {
        Packet packet(av_packet_alloc());
        for (;;) {
            int error = av_read_frame(input_.format(), packet.get());
            if (error == AVERROR_EOF) {
                break;
            }
            if (error < 0) {
                return std::unexpected(errorText(error));
            }
            auto handled = handle(packet.get());
            av_packet_unref(packet.get());
            if (!handled) {
                return handled;
            }
        }
        return flushAll();
    }

    std::expected<void, std::string> handle(AVPacket* packet) {
        if (packet->stream_index == videoIndex_) {
            return decodeVideo(packet);
        }
        auto route = routes_.find(packet->stream_index);
        if (route == routes_.end()) {
            return {};
        }
        if (!route->second.encoder) {
            return copySound(route->second, packet);
        }
        return decodeSound(route->second, packet);
    }

    std::expected<void, std::string> copySound(SoundRoute& route, AVPacket* packet) {
        av_packet_rescale_ts(packet, route.input->time_base, route.output->time_base);
        packet->stream_index = route.output->index;
        packet->pos = -1;
        if (int error = av_interleaved_write_frame(output_->format(), packet); error < 0) {
            return std::unexpected(errorText(error));
        }
        return {};
    }

    std::expected<void, std::string> decodeVideo(const AVPacket* packet) {
        if (int error = avcodec_send_packet(decoder_.get(), packet); error < 0) {
            return std::unexpected(errorText(error));
        }
        Frame frame(av_frame_alloc());
        for (;;) {
            int error = avcodec_receive_frame(decoder_.get(), frame.get());
            if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) {
                return {};
            }
            if (error < 0) {
                return std::unexpected(errorText(error));
            }
            auto encoded = encodeVideo(frame.get());
            av_frame_unref(frame.get());
            if (!encoded) {
                return encoded;
            }
        }
    }

    std::expected<void, std::string> encodeVideo(AVFrame* decoded) {
        auto scaled = scale(decoded);
        if (!scaled) {
            return std::unexpected(scaled.error());
        }
        (*scaled)->pts = decoded->best_effort_timestamp;
        (*scaled)->pict_type = AV_PICTURE_TYPE_NONE;
        if (auto sent = sendToEncoder((*scaled).get()); !sent) {
            return sent;
        }
        ++frames_;
        if (progress_) {
            progress_(frames_, input_.format()->streams[videoIndex_]->nb_frames);
        }
        return {};
    }

    std::expected<Frame, std::string> scale(const AVFrame* decoded) {
        auto format = static_cast<AVPixelFormat>(decoded->format);
        scaler_.reset(sws_getCachedContext(
            scaler_.release(), decoded->width, decoded->height, format, encoder_->width,
            encoder_->height, encoder_->pix_fmt, SWS_BICUBIC, nullptr, nullptr, nullptr));
        if (!scaler_) {
            return std::unexpected(std::string("its pictures could not be scaled"));
        }
        Frame scaled(av_frame_alloc());
        scaled->format = encoder_->pix_fmt;
        scaled->width = encoder_->width;
        scaled->height = encoder_->height;
        if (int error = av_frame_get_buffer(scaled.get(), 0); error < 0) {
            return std::unexpected(errorText(error));
        }
        sws_scale(scaler_.get(), decoded->data, decoded->linesize, 0, decoded->height, scaled->data,
                  scaled->linesize);
        return scaled;
    }

    std::expected<void, std::string> sendToEncoder(const AVFrame* frame) {
        if (int error = avcodec_send_frame(encoder_.get(), frame); error < 0) {
            return std::unexpected(errorText(error));
        }
        return drain(encoder_.get(), videoOut_);
    }

    std::expected<void, std::string> drain(AVCodecContext* encoder, AVStream* stream) {
        Packet packet(av_packet_alloc());
        for (;;) {
            int error = avcodec_receive_packet(encoder, packet.get());
            if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) {
                return {};
            }
            if (error < 0) {
                return std::unexpected(errorText(error));
            }
            packet->stream_index = stream->index;
            av_packet_rescale_ts(packet.get(), encoder->time_base, stream->time_base);
            if (error = av_interleaved_write_frame(output_->format(), packet.get()); error < 0) {
                return std::unexpected(errorText(error));
            }
        }
    }

    std::expected<void, std::string> decodeSound(SoundRoute& route, const AVPacket* packet) {
        if (int error = avcodec_send_packet(route.decoder.get(), packet); error < 0) {
            return std::unexpected(errorText(error));
        }
        Frame frame(av_frame_alloc());
        for (;;) {
            int error = avcodec_receive_frame(route.decoder.get(), frame.get());
            if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) {
                return {};
            }
            if (error < 0) {
                return std::unexpected(errorText(error));
            }
            auto queued = queueSound(route, frame.get());
            av_frame_unref(frame.get());
            if (!queued) {
                return queued;
            }
        }
    }

    // Resamples into the queue, then encodes every whole frame it holds.
    std::expected<void, std::string> queueSound(SoundRoute& route, const AVFrame* decoded) {
        AVCodecContext* encoder = route.encoder.get();
        if (route.nextPts == AV_NOPTS_VALUE) {
            route.nextPts = decoded->best_effort_timestamp == AV_NOPTS_VALUE
                                ? 0
                                : av_rescale_q(decoded->best_effort_timestamp,
                                               route.input->time_base, encoder->time_base);
        }
        Frame converted(av_frame_alloc());
        converted->format = encoder->sample_fmt;
        converted->sample_rate = encoder->sample_rate;
        av_channel_layout_copy(&converted->ch_layout, &encoder->ch_layout);
        if (int error = swr_convert_frame(route.resampler.get(), converted.get(), decoded);
            error < 0) {
            return std::unexpected(errorText(error));
        }
        av_audio_fifo_write(route.fifo.get(), reinterpret_cast<void**>(converted->data),
                            converted->nb_samples);
        return encodeQueued(route, false);
    }

    std::expected<void, std::string> encodeQueued(SoundRoute& route, bool last) {
        AVCodecContext* encoder = route.encoder.get();
        while (av_audio_fifo_size(route.fifo.get()) >= encoder->frame_size ||
               (last && av_audio_fifo_size(route.fifo.get()) > 0)) {
            int samples = std::min(av_audio_fifo_size(route.fifo.get()), encoder->frame_size);
            Frame frame(av_frame_alloc());
            frame->nb_samples = samples;
            frame->format = encoder->sample_fmt;
            frame->sample_rate = encoder->sample_rate;
            av_channel_layout_copy(&frame->ch_layout, &encoder->ch_layout);
            if (int error = av_frame_get_buffer(frame.get(), 0); error < 0) {
                return std::unexpected(errorText(error));
            }
            av_audio_fifo_read(route.fifo.get(), reinterpret_cast<void**>(frame->data), samples);
            frame->pts = route.nextPts;
            route.nextPts += samples;
            if (int error = avcodec_send_frame(encoder, frame.get()); error < 0) {
                return std::unexpected(errorText(error));
            }
            if (auto drained = drain(encoder, route.output); !drained) {
                return drained;
            }
        }
        return {};
    }

    std::expected<void, std::string> flushAll() {
        if (auto decoded = decodeVideo(nullptr); !decoded) {
            return decoded;
        }
        if (auto flushed = sendToEncoder(nullptr); !flushed) {
            return flushed;
        }
        for (auto& [index, route] : routes_) {
            if (!route.encoder) {
                continue;
            }
            if (auto decoded = decodeSound(route, nullptr); !decoded) {
                return decoded;
            }
            if (auto queued = encodeQueued(route, true); !queued) {
                return queued;
            }
            if (int error = avcodec_send_frame(route.encoder.get(), nullptr); error < 0) {
                return std::unexpected(errorText(error));
            }
            if (auto drained = drain(route.encoder.get(), route.output); !drained) {
                return drained;
            }
        }
        return {};
    }

    libav::Input input_;
    std::unique_ptr<Output> output_;
    VideoEncoding encoding_;
    const VideoTranscoder::Progress& progress_;
    int videoIndex_ = -1;
    CodecContext decoder_;
    CodecContext encoder_;
    AVStream* videoOut_ = nullptr;
    Scaler scaler_;
    std::map<int, SoundRoute> routes_;
    std::int64_t frames_ = 0;
};

// Even (the encoder halves the colour planes), never above `side`, at
// least 2.
int evenSide(double side) {
    return std::max(static_cast<int>(side / 2.0) * 2, 2);
}

} // namespace

VideoTranscoder::Size VideoTranscoder::targetSize(int width, int height,
                                                  const VideoEncoding& encoding) {
    int longSide = std::max(width, height);
    int shortSide = std::min(width, height);
    double factor = 1.0;
    if (longSide > encoding.maxLongSide) {
        factor = std::min(factor, static_cast<double>(encoding.maxLongSide) / longSide);
    }
    if (shortSide > encoding.maxShortSide) {
        factor = std::min(factor, static_cast<double>(encoding.maxShortSide) / shortSide);
    }
    return {evenSide(width * factor), evenSide(height * factor)};
}

std::expected<VideoTranscoder::Written, std::string>
VideoTranscoder::transcode(const std::string& source, const std::string& destination,
                           mode_t permissions, const VideoEncoding& encoding,
                           const Progress& progress) {
    auto input = libav::Input::open(source);
    if (!input) {
        return std::unexpected(input.error());
    }
    auto output = Output::create(destination, permissions, muxerFor(input->format()));
    if (!output) {
        return std::unexpected(output.error());
    }
    Transcode transcode(std::move(*input), std::move(*output), encoding, progress);
    return transcode.run();
}

} // namespace brevant::platform
