#include "media/media_file.h"

#include "fault.h"
#include "media/decoders.h"

extern "C" {
#include <libavcodec/packet.h>
#include <libavformat/avformat.h>
#include <libavutil/common.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
}
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

namespace ZorvicUnit {

namespace {

constexpr int BufferBytes = 64 * 1024;

// A file with a weaker likeness than this to a format is taken for what it is not: random bytes pass as raw streams.
constexpr int LeastLikeness = AVPROBE_SCORE_RETRY;

// What films, sound and pictures of a theatre come in. The rest of what the library knows (old games, play lists, page
// descriptions, subtitles, devices) is the larger part, the least looked after, and nothing that could be shown.
constexpr const char* Formats =
    "mov,matroska,mxf,mxf_opatom,avi,mpegts,mpeg,mpegvideo,asf,flv,gxf,lxf,nut,ogg,dv,ivf,obu,av1,h264,hevc,m4v,mjpeg,"
    "vc1,dnxhd,dirac,yuv4mpegpipe,gif,apng,"
    "wav,w64,aiff,caf,au,mp3,aac,loas,ac3,eac3,dts,dtshd,truehd,mlp,flac,ape,wv,tta,amr,voc,dsf,iff,"
    "png_pipe,jpeg_pipe,jpegls_pipe,jpegxl_pipe,j2k_pipe,webp_pipe,bmp_pipe,tiff_pipe,dpx_pipe,exr_pipe,psd_pipe,"
    "svg_pipe,pam_pipe,pbm_pipe,pgm_pipe,ppm_pipe,pcx_pipe,sgi_pipe,sunrast_pipe,qoi_pipe,gif_pipe";

int RefuseOtherFiles(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EPERM);
}

// The library's own messages go to standard error, past the log, and name every oddity of a stranger's file.
void SetUpLibrary() {
    static std::once_flag once;
    std::call_once(once, [] {
        av_log_set_level(AV_LOG_QUIET);
        av_max_alloc(MostAllocated);
    });
}

}  // namespace

struct MediaFile::Source {
    const std::string Name;
    const ReadLimit Limit;
    const Descriptor Opened;
    std::int64_t Offset = 0;  ///< of its own: several readers may share what the descriptor refers to
    int Problem = 0;          ///< of the disk
    AVIOContext* Buffered = nullptr;

    Source(Descriptor opened, std::string name, const ReadLimit& limit)
        : Name(std::move(name)), Limit(limit), Opened(std::move(opened)) {}
    ~Source() {
        if (Buffered != nullptr) av_freep(&Buffered->buffer);
        avio_context_free(&Buffered);
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    static int Read(void* opaque, std::uint8_t* buffer, int size) {
        auto* self = static_cast<Source*>(opaque);
        if (self->Limit.Reached()) return AVERROR_EXIT;
        const ssize_t got = pread(self->Opened.Get(), buffer, static_cast<std::size_t>(size), self->Offset);
        if (got < 0) return AVERROR(self->Problem = errno);
        self->Offset += got;
        return got == 0 ? AVERROR_EOF : static_cast<int>(got);
    }

    static std::int64_t Seek(void* opaque, std::int64_t offset, int whence) {
        auto* self = static_cast<Source*>(opaque);
        struct stat status = {};
        const int origin = whence & ~AVSEEK_FORCE;
        if (origin != SEEK_SET && origin != SEEK_CUR && fstat(self->Opened.Get(), &status) != 0) return AVERROR(errno);
        if (whence == AVSEEK_SIZE) return status.st_size;
        const std::int64_t base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? self->Offset : status.st_size;
        const std::int64_t at = av_sat_add64(base, offset);
        if (at < 0) return AVERROR(EINVAL);
        return self->Offset = at;
    }

    static int Interrupted(void* opaque) { return static_cast<Source*>(opaque)->Limit.Reached() ? 1 : 0; }
};

MediaFile::MediaFile(Descriptor opened, std::string name, const ReadLimit& limit)
    : Input(std::make_unique<Source>(std::move(opened), std::move(name), limit)) {
    SetUpLibrary();
    try {
        Open();
    } catch (...) {
        avformat_close_input(&Format);
        throw;
    }
}

MediaFile::~MediaFile() {
    avformat_close_input(&Format);
}

void MediaFile::Open() {
    auto* const buffer = static_cast<unsigned char*>(av_malloc(BufferBytes));
    Input->Buffered = avio_alloc_context(buffer, BufferBytes, 0, Input.get(), &Source::Read, nullptr, &Source::Seek);
    Format = avformat_alloc_context();
    if (buffer == nullptr || Input->Buffered == nullptr || Format == nullptr) throw std::bad_alloc();
    Format->pb = Input->Buffered;
    Format->flags |= AVFMT_FLAG_CUSTOM_IO;
    Format->io_open = &RefuseOtherFiles;
    // Session descriptions open sockets past io_open.
    Format->protocol_whitelist = av_strdup("none");
    Format->format_whitelist = av_strdup(Formats);
    Format->codec_whitelist = av_strdup(TrustedDecoders());
    if (Format->protocol_whitelist == nullptr || Format->format_whitelist == nullptr ||
        Format->codec_whitelist == nullptr)
        throw std::bad_alloc();
    Format->interrupt_callback = {&Source::Interrupted, Input.get()};

    // Without the name: what a file holds decides, not how it is called (a text must not become a film of its letters).
    const int opened = avformat_open_input(&Format, nullptr, nullptr, nullptr);
    CheckLimit();
    if (opened == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (opened < 0 || Format->probe_score < LeastLikeness)
        throw Fault(FaultKind::Refused, Input->Name + " is not a media file");
    const int found = avformat_find_stream_info(Format, nullptr);
    CheckLimit();
    if (found < 0) throw Fault(FaultKind::Refused, Input->Name + " has no readable streams");
}

void MediaFile::CheckLimit() const {
    if (Input->Limit.Reached()) throw Fault(FaultKind::Slow, "reading " + Input->Name + " took too long");
    if (Input->Problem != 0)
        throw Fault(FaultKind::Internal, "cannot read " + Input->Name + ": " + std::strerror(Input->Problem));
}

const AVStream* MediaFile::Video() const {
    const int index = av_find_best_stream(Format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0) return nullptr;
    const AVStream* stream = Format->streams[index];
    const bool cover = (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
    const bool sized = stream->codecpar->width > 0 && stream->codecpar->height > 0;
    return !cover && sized ? stream : nullptr;
}

const AVStream* MediaFile::Audio() const {
    const int index = av_find_best_stream(Format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index < 0) return nullptr;
    const AVStream* stream = Format->streams[index];
    const bool known = stream->codecpar->sample_rate > 0 && stream->codecpar->ch_layout.nb_channels > 0;
    return known ? stream : nullptr;
}

void MediaFile::ReadOnly(const AVStream& stream) {
    for (unsigned i = 0; i < Format->nb_streams; ++i)
        Format->streams[i]->discard = Format->streams[i] == &stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
}

bool MediaFile::Rewind() {
    return av_seek_frame(Format, -1, 0, AVSEEK_FLAG_BYTE) >= 0;
}

bool MediaFile::SeekBefore(const AVStream& stream, std::int64_t timeStamp) {
    return av_seek_frame(Format, stream.index, timeStamp, AVSEEK_FLAG_BACKWARD) >= 0;
}

bool MediaFile::Read(AVPacket& packet) {
    while (!Input->Limit.Reached() && av_read_frame(Format, &packet) >= 0) {
        // What was read to identify the streams comes first, and belongs to any of them.
        if (Format->streams[packet.stream_index]->discard != AVDISCARD_ALL) return true;
        av_packet_unref(&packet);
    }
    return false;
}

}  // namespace ZorvicUnit
