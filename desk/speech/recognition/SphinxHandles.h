#pragma once

// The library's headers use names of its own types and declare no linkage throughout.
extern "C" {
#include <pocketsphinx.h>
#include <sphinxbase/err.h>
#include <sphinxbase/fe.h>
}

#include <memory>

class QByteArray;

/// Owners of PocketSphinx's and SphinxBase's objects.
namespace desk::speech::sphinx
{

struct Free {
    void operator()(ps_decoder_t* decoder) const { ps_free(decoder); }

    void operator()(fe_t* frontEnd) const { fe_free(frontEnd); }

    void operator()(cmd_ln_t* options) const { cmd_ln_free_r(options); }
};

using DecoderPtr = std::unique_ptr<ps_decoder_t, Free>;
using FrontEndPtr = std::unique_ptr<fe_t, Free>;
using OptionsPtr = std::unique_ptr<cmd_ln_t, Free>;

/// Loads the models of a folder, which takes a quarter of a second. Null where they cannot be read.
DecoderPtr openDecoder(const QByteArray& folder);

enum class Silence { Keep, Find };

/// Makes cepstra of frames, 100 a second: of every frame, or so that it knows where speech is.
FrontEndPtr openFrontEnd(Silence silence);

} // namespace desk::speech::sphinx
