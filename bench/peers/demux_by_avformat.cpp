// Reads a transport stream to its end with libavformat, which collects PAT, SDT and PMTs. It drops the streams'
// packets, so that it does no more than the service.
//   demux_by_avformat FILE
extern "C" {
#include <libavformat/avformat.h>
}

#include <cstdio>

int main(int, char** arguments) {
    av_log_set_level(AV_LOG_QUIET);
    AVFormatContext* file = nullptr;
    if (avformat_open_input(&file, arguments[1], nullptr, nullptr) != 0) {
        std::fprintf(stderr, "demux_by_avformat: cannot open %s\n", arguments[1]);
        return 1;
    }
    AVPacket* packet = av_packet_alloc();
    unsigned int known = 0;
    while (av_read_frame(file, packet) == 0) {
        av_packet_unref(packet);
        for (; known < file->nb_streams; ++known) {
            file->streams[known]->discard = AVDISCARD_ALL;
        }
    }
    av_packet_free(&packet);
    const unsigned int programs = file->nb_programs;
    avformat_close_input(&file);
    return programs == 0 ? 1 : 0;
}
