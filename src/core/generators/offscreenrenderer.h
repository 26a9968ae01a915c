#pragma once

#include "generators/generatorraster.h"
#include "generators/generatorsettings.h"
#include "palette/describedexception.h"
#include "palette/palette.h"

#include <QString>

// Renders a generator with its shaders into an off-screen framebuffer (a GL_RGBA8 colour
// renderbuffer: the 16-bit encoding needs 8 bits a channel) of its own context and surface, and
// reads the picture back, rows bottom-up so that row 0 is the top. Needs a QGuiApplication on a
// platform with OpenGL. On the GUI thread the context, its surface, the framebuffer and the
// programs built are kept for the next render until the application quits (or release()); a
// render puts back whatever context was current before it.
namespace OffscreenRenderer {

// A shader that does not compile or link here (a driver without double precision, say); the
// callers that have another way to make the picture take it.
class ProgramFailure : public DescribedException
{
public:
    using DescribedException::DescribedException;
};

struct Options
{
    // Instead of the settings' own fragment shader (a resource path): for tests and shaders
    // under development.
    QString fragmentShader;
    // The largest tile drawn at once; 0: as large as the driver allows (at most 4096).
    int tileSize = 0;
};

// Whether a context with framebuffer objects can be made here; the reason when not.
bool available(QString *reason = nullptr);
// The read-back at settings.xsize x settings.ysize. Throws DescribedException when no context,
// framebuffer or program can be made (ProgramFailure for the program).
GeneratorRaster render(const GeneratorSettings &settings, const Palette<uint> &palette,
                       const Options &options = {});
// Frees the kept context and all that was made in it now; the next render makes them again.
void release();

} // namespace OffscreenRenderer
