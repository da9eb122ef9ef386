#include "desk/speech/recognition/SphinxHandles.h"

#include <QByteArray>

namespace desk::speech::sphinx
{

namespace
{

/// The library writes pages to the error output. What concerns the user comes back as return values.
void beSilent()
{
    err_set_logfp(nullptr);
    err_set_callback(nullptr, nullptr);
}

} // namespace

DecoderPtr openDecoder(const QByteArray& folder)
{
    beSilent();
    const QByteArray acoustic = folder + "/en-us";
    const QByteArray language = folder + "/en-us.lm.bin";
    const QByteArray dictionary = folder + "/cmudict-en-us.dict";
    const OptionsPtr options(cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", acoustic.constData(), "-lm",
                                         language.constData(), "-dict", dictionary.constData(), "-remove_silence", "no",
                                         nullptr));
    return DecoderPtr(options ? ps_init(options.get()) : nullptr);
}

FrontEndPtr openFrontEnd(Silence silence)
{
    beSilent();
    const char* find = silence == Silence::Find ? "yes" : "no";
    const OptionsPtr options(cmd_ln_init(nullptr, fe_get_args(), TRUE, "-remove_silence", find, "-remove_noise", find,
                                         "-samprate", "16000", "-nfft", "512", "-lowerf", "130", "-upperf", "6800",
                                         "-nfilt", "25", "-transform", "dct", nullptr));
    return FrontEndPtr(options ? fe_init_auto_r(options.get()) : nullptr);
}

} // namespace desk::speech::sphinx
