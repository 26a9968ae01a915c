#pragma once

#include "document/documentimage.h"
#include "generators/generatorraster.h"
#include "generators/generatorsettings.h"
#include "palette/describedexception.h"
#include "palette/palette.h"

#include <QString>

#include <functional>

// A generator's picture as a document image, by whichever renderer is asked for: the one call
// behind the dialogs' OK, the macro step and `chromaxis-cli generate`.
namespace ImageGenerator {

enum class Renderer { Auto, Gl, Cpu };

// Progress of a render on the processor in percent; returning false cancels it.
using Progress = std::function<bool(int)>;

// What a cancelled render throws.
class Cancelled : public DescribedException
{
public:
    Cancelled();
};

// "auto", "gl", "cpu"; throws DescribedException for another word.
Renderer rendererFromText(const QString &word);

// The read-back at settings.xsize x settings.ysize. Auto uses OpenGL when a context can be made
// and the processor otherwise; Gl without a usable OpenGL throws DescribedException saying so.
// The processor's values pass through the same encoding as the framebuffer's.
GeneratorRaster render(const GeneratorSettings &settings, const Palette<uint> &palette,
                       Renderer renderer = Renderer::Auto);
// The same with progress and cancelling for a render on the processor (OpenGL renders at once);
// throws Cancelled when progress asks to stop.
GeneratorRaster render(const GeneratorSettings &settings, const Palette<uint> &palette, Renderer renderer,
                       const Progress &progress);
// Whether renderer would draw with OpenGL here (Auto: when a context can be made).
bool usesOpenGL(Renderer renderer);

// render() made into the document image of settings.target (GeneratorOutput::toImage).
DocumentImage generate(const GeneratorSettings &settings, const Palette<uint> &palette,
                       Renderer renderer = Renderer::Auto, const Progress &progress = {});

} // namespace ImageGenerator
