#include "media/decoders.h"

namespace ZorvicUnit {

const char* TrustedDecoders() {
    return  // pictures in motion
        "h264,hevc,libdav1d,libaom-av1,av1,vp8,vp9,libvpx,libvpx-vp9,mpeg1video,mpeg2video,mpegvideo,mpeg4,h263,h263p,"
        "msmpeg4v1,msmpeg4v2,msmpeg4,mjpeg,mjpegb,prores,dnxhd,cfhd,hap,dvvideo,notchlc,speedhq,magicyuv,utvideo,"
        "huffyuv,ffvhuff,ffv1,qtrle,rawvideo,r10k,r210,v210,v210x,v308,v408,v410,y41p,yuv4,ayuv,rpza,smc,8bps,cinepak,"
        "svq1,svq3,vc1,wmv1,wmv2,wmv3,flv,theora,vp3,vp6,vp6f,vp6a,dirac,cavs,snow,pixlet,msrle,msvideo1,wrapped_"
        "avframe,"
        // stills
        "png,apng,gif,bmp,tiff,webp,jpeg2000,libopenjpeg,jpegls,libjxl,dpx,exr,psd,librsvg,pam,pbm,pgm,pgmyuv,ppm,pfm,"
        "phm,pcx,sgi,sunrast,qoi,targa,iff,"
        // sound
        "aac,aac_latm,mp1float,mp1,mp2float,mp2,mp3float,mp3,ac3,eac3,dca,truehd,mlp,flac,alac,ape,wavpack,tta,opus,"
        "libopus,vorbis,libvorbis,speex,libspeex,amrnb,amrwb,gsm,gsm_ms,wmav1,wmav2,wmapro,wmalossless,nellymoser,"
        "s302m,dvaudio,dsd_lsbf,dsd_lsbf_planar,dsd_msbf,dsd_msbf_planar,8svx_exp,8svx_fib,"
        "adpcm_ms,adpcm_ima_wav,adpcm_ima_qt,adpcm_swf,adpcm_yamaha,g722,g726,g726le,"
        "pcm_alaw,pcm_mulaw,pcm_bluray,pcm_dvd,pcm_f16le,pcm_f24le,pcm_f32be,pcm_f32le,pcm_f64be,pcm_f64le,pcm_lxf,"
        "pcm_s8,pcm_s8_planar,pcm_s16be,pcm_s16be_planar,pcm_s16le,pcm_s16le_planar,pcm_s24be,pcm_s24daud,pcm_s24le,"
        "pcm_s24le_planar,pcm_s32be,pcm_s32le,pcm_s32le_planar,pcm_s64be,pcm_s64le,pcm_u8,pcm_u16be,pcm_u16le,"
        "pcm_u24be,pcm_u24le,pcm_u32be,pcm_u32le,pcm_vidc";
}

}  // namespace ZorvicUnit
