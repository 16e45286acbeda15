#include "VideoProbe.hpp"

#include "engine/platform/LibavMedia.hpp"

#include <string_view>

namespace brevant::platform {

namespace {

std::optional<std::string> tag(const AVDictionary* metadata, const char* key) {
    const AVDictionaryEntry* entry = av_dict_get(metadata, key, nullptr, 0);
    if (entry == nullptr || entry->value == nullptr) {
        return std::nullopt;
    }
    return std::string(entry->value);
}

std::optional<std::string> locationOf(const AVDictionary* metadata) {
    if (auto location = tag(metadata, "location")) {
        return location;
    }
    return tag(metadata, "com.apple.quicktime.location.ISO6709");
}

std::vector<SoundStream> soundOf(const AVFormatContext* format) {
    std::vector<SoundStream> sound;
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        const AVCodecParameters* parameters = format->streams[i]->codecpar;
        if (parameters->codec_type != AVMEDIA_TYPE_AUDIO) {
            continue;
        }
        sound.push_back({avcodec_get_name(parameters->codec_id), parameters->ch_layout.nb_channels,
                         parameters->sample_rate});
    }
    return sound;
}

} // namespace

std::expected<VideoFacts, std::string> VideoProbe::read(const std::string& path) {
    auto input = libav::Input::open(path);
    if (!input) {
        return std::unexpected(input.error());
    }
    const AVFormatContext* format = input->format();
    auto index = input->videoStream();
    if (!index) {
        return std::unexpected(std::string("it holds no video"));
    }
    AVStream* stream = format->streams[*index];
    const AVCodecParameters* parameters = stream->codecpar;
    VideoFacts facts;
    facts.container = format->iformat->name;
    facts.codec = avcodec_get_name(parameters->codec_id);
    facts.width = parameters->width;
    facts.height = parameters->height;
    facts.rotation = libav::clockwiseRotation(stream);
    facts.durationSeconds = libav::streamSeconds(format, stream);
    AVRational rate = av_guess_frame_rate(input->format(), stream, nullptr);
    facts.frameRate = rate.num > 0 && rate.den > 0 ? av_q2d(rate) : 0;
    facts.frameCount = stream->nb_frames;
    facts.sound = soundOf(format);
    facts.creationTime = tag(format->metadata, "creation_time");
    facts.location = locationOf(format->metadata);
    facts.contentIdentifier = tag(format->metadata, "com.apple.quicktime.content.identifier");
    facts.appleCreationDate = tag(format->metadata, "com.apple.quicktime.creationdate");
    return facts;
}

} // namespace brevant::platform
