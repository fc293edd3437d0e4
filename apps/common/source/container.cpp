#include "source/container.h"

#include <stdexcept>

#if VEKVC_WITH_LIBAVFORMAT

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}
#include <dlfcn.h>

namespace vekapp {
namespace {

// The functions of libavformat and its kin, found when the first container is opened: a hundred libraries come with
// them, and loading these would cost every start of a program 60 ms.
struct Libav {
    decltype(&::av_log_set_level) log_set_level;
    decltype(&::av_strerror) strerror;
    decltype(&::av_malloc) malloc;
    decltype(&::av_free) free;
    decltype(&::av_get_media_type_string) get_media_type_string;
    decltype(&::avcodec_get_name) get_name;
    decltype(&::av_packet_alloc) packet_alloc;
    decltype(&::av_packet_unref) packet_unref;
    decltype(&::av_packet_free) packet_free;
    decltype(&::avio_alloc_context) alloc_io;
    decltype(&::avio_context_free) free_io;
    decltype(&::avformat_alloc_context) alloc_format;
    decltype(&::avformat_open_input) open_input;
    decltype(&::avformat_close_input) close_input;
    decltype(&::av_read_frame) read_frame;

    Libav() {
        const Library util("libavutil.so." AV_STRINGIFY(LIBAVUTIL_VERSION_MAJOR));
        const Library codec("libavcodec.so." AV_STRINGIFY(LIBAVCODEC_VERSION_MAJOR));
        const Library format("libavformat.so." AV_STRINGIFY(LIBAVFORMAT_VERSION_MAJOR));
        util.find(log_set_level, "av_log_set_level");
        util.find(strerror, "av_strerror");
        util.find(malloc, "av_malloc");
        util.find(free, "av_free");
        util.find(get_media_type_string, "av_get_media_type_string");
        codec.find(get_name, "avcodec_get_name");
        codec.find(packet_alloc, "av_packet_alloc");
        codec.find(packet_unref, "av_packet_unref");
        codec.find(packet_free, "av_packet_free");
        format.find(alloc_io, "avio_alloc_context");
        format.find(free_io, "avio_context_free");
        format.find(alloc_format, "avformat_alloc_context");
        format.find(open_input, "avformat_open_input");
        format.find(close_input, "avformat_close_input");
        format.find(read_frame, "av_read_frame");
        log_set_level(AV_LOG_QUIET);
    }

  private:
    // Stays loaded.
    struct Library {
        explicit Library(const char* name) : handle(dlopen(name, RTLD_NOW | RTLD_LOCAL)) { check(); }
        template <class Function>
        void find(Function*& function, const char* name) const {
            function = reinterpret_cast<Function*>(dlsym(handle, name));
            if (function == nullptr) check();
        }
        void check() const {
            if (const char* error = dlerror(); error != nullptr)
                throw std::runtime_error(
                    std::string("containers are read with libavformat: install libavformat" AV_STRINGIFY(
                        LIBAVFORMAT_VERSION_MAJOR) " (") +
                    error + ")");
        }
        void* handle;
    };
};

const Libav& libav() {
    static const Libav functions;
    return functions;
}

constexpr int kPiece = 1 << 16;

std::string reason(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    libav().strerror(error, text, sizeof text);
    return text;
}

Rational rational(AVRational r) { return {r.num, r.den}; }

// The file is read through our own hands: libavformat opens nothing by name, so no playlist leads elsewhere.
int readPiece(void* opaque, std::uint8_t* to, int most) {
    try {
        const std::size_t n = static_cast<InputFile*>(opaque)->read({to, static_cast<std::size_t>(most)});
        return n == 0 ? AVERROR_EOF : static_cast<int>(n);
    } catch (const std::exception&) {
        return AVERROR(EIO);
    }
}
std::int64_t seekTo(void* opaque, std::int64_t offset, int whence) {
    auto& file = *static_cast<InputFile*>(opaque);
    if (whence == AVSEEK_SIZE) return static_cast<std::int64_t>(file.size());
    if ((whence & ~AVSEEK_FORCE) != SEEK_SET || offset < 0) return AVERROR(EINVAL);
    try {
        file.seek(static_cast<std::uint64_t>(offset));
    } catch (const std::exception&) {
        return AVERROR(EIO);
    }
    return offset;
}

class ContainerSource : public Source {
  public:
    ContainerSource(InputFile& file, const std::string& kind, bool (*wanted)(const std::string& codec))
        : file_(file), kind_(kind) {
        auto* memory = static_cast<unsigned char*>(libav().malloc(kPiece));
        io_ = memory == nullptr
                  ? nullptr
                  : libav().alloc_io(memory, kPiece, 0, &file, readPiece, nullptr, file.seekable() ? seekTo : nullptr);
        format_ = libav().alloc_format();
        packet_ = libav().packet_alloc();
        if (io_ == nullptr || format_ == nullptr || packet_ == nullptr) {
            if (io_ == nullptr) libav().free(memory);
            close();
            throw std::bad_alloc();
        }
        format_->pb = io_;
        const int error = libav().open_input(&format_, nullptr, nullptr, nullptr);  // frees the context if it fails
        if (error < 0) {
            close();
            throw std::runtime_error(file.name() + ": " + kind + " that cannot be read: " + reason(error));
        }
        try {
            choose(wanted);
        } catch (...) {
            close();
            throw;
        }
    }
    ~ContainerSource() override { close(); }

    bool next(Packet& packet) override {
        for (;;) {
            if (held_)
                held_ = false;
            else if (!read())
                return false;
            if (packet_->stream_index != stream_ || packet_->size <= 0) continue;
            const AVCodecParameters& p = *format_->streams[stream_]->codecpar;
            packet.data = {packet_->data, static_cast<std::size_t>(packet_->size)};
            packet.extradata = {p.extradata, static_cast<std::size_t>(p.extradata_size)};
            packet.pts = packet_->pts == AV_NOPTS_VALUE ? kNoTime : packet_->pts;
            packet.position = packet_->pos < 0 ? file_.position() : static_cast<std::uint64_t>(packet_->pos);
            return true;
        }
    }
    const StreamInfo& info() const override { return info_; }
    std::uint64_t done() const override { return file_.position(); }
    std::uint64_t total() const override { return file_.size(); }

  private:
    // The next packet of any stream into packet_; false at the end.
    bool read() {
        libav().packet_unref(packet_);
        const int error = libav().read_frame(format_, packet_);
        if (error == AVERROR_EOF) return false;
        if (error < 0) throw std::runtime_error(file_.name() + ": reading breaks off: " + reason(error));
        return true;
    }

    // Program and transport streams show what they hold packet by packet, so the first packets are waited for.
    void choose(bool (*wanted)(const std::string& codec)) {
        constexpr int kMostPackets = 2000;
        for (int i = 0; i < kMostPackets && stream_ < 0; ++i) {
            const bool unannounced = (format_->ctx_flags & AVFMTCTX_NOHEADER) != 0;
            if (i == 0 && !unannounced) find(wanted, false);
            if (stream_ >= 0 || !unannounced) break;
            if (!read()) break;
            held_ = true;
            find(wanted, true);
            if (stream_ >= 0) break;
        }
        if (stream_ < 0) find([](const std::string&) { return true; }, false);
        if (stream_ < 0) throw std::runtime_error(file_.name() + " is " + kind_ + contents());
        const AVStream& stream = *format_->streams[stream_];
        const AVCodecParameters& p = *stream.codecpar;
        info_.codec = libav().get_name(p.codec_id);
        info_.rate = rational(stream.avg_frame_rate.num > 0 ? stream.avg_frame_rate : stream.r_frame_rate);
        info_.sampleAspect =
            rational(stream.sample_aspect_ratio.num > 0 ? stream.sample_aspect_ratio : p.sample_aspect_ratio);
        info_.width = p.width;
        info_.height = p.height;
        for (unsigned i = 0; i < format_->nb_streams; ++i)
            if (static_cast<int>(i) != stream_) format_->streams[i]->discard = AVDISCARD_ALL;
    }
    void find(bool (*wanted)(const std::string& codec), bool onlyOfPacket) {
        for (unsigned i = 0; i < format_->nb_streams; ++i) {
            const AVCodecParameters& p = *format_->streams[i]->codecpar;
            if (onlyOfPacket && static_cast<int>(i) != packet_->stream_index) continue;
            const bool video = p.codec_type == AVMEDIA_TYPE_VIDEO &&
                               (format_->streams[i]->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
            if (video && wanted(libav().get_name(p.codec_id))) {
                stream_ = static_cast<int>(i);
                return;
            }
        }
    }
    std::string contents() const {
        std::string all;
        for (unsigned i = 0; i < format_->nb_streams; ++i) {
            const AVCodecParameters& p = *format_->streams[i]->codecpar;
            const char* type = libav().get_media_type_string(p.codec_type);
            all += std::string(i == 0 ? ": " : ", ") + libav().get_name(p.codec_id) + " " +
                   (type == nullptr ? "data" : type);
        }
        return all.empty() ? " without any stream" : " without video" + all + " only";
    }

    void close() {
        libav().packet_free(&packet_);
        libav().close_input(&format_);
        if (io_ != nullptr) libav().free(io_->buffer);
        libav().free_io(&io_);
    }

    InputFile& file_;
    std::string kind_;
    AVIOContext* io_ = nullptr;
    AVFormatContext* format_ = nullptr;
    AVPacket* packet_ = nullptr;
    StreamInfo info_;
    int stream_ = -1;
    bool held_ = false;  // packet_ is read and not yet given out
};

}  // namespace

std::unique_ptr<Source> openContainer(InputFile& file, const std::string& kind,
                                      bool (*wanted)(const std::string& codec)) {
    try {
        libav();
    } catch (const std::runtime_error& e) {
        throw std::runtime_error(file.name() + " is " + kind + "; " + e.what());
    }
    return std::make_unique<ContainerSource>(file, kind, wanted);
}

}  // namespace vekapp

#else

namespace vekapp {

std::unique_ptr<Source> openContainer(InputFile& file, const std::string& kind, bool (*)(const std::string&)) {
    throw std::runtime_error(file.name() + " is " + kind +
                             "; this build reads no containers: install libavformat-dev and build again");
}

}  // namespace vekapp

#endif
