#pragma once

#include "generators/generatorsettings.h"
#include "palette/palette.h"

#include <QString>

#include <memory>

class QOpenGLShaderProgram;

// The drawing every generator shares, in the OpenGL context current at the call: the program of
// the default vertex shader and the generator's fragment shader (":res/shader/..."), the palette
// as a one-dimensional texture (nearest, repeat), the uniforms from the settings and one quad with
// the fixed-function matrices. The preview widget and the off-screen renderer both draw through
// it, so the preview and the picture of OK cannot drift apart.
class GeneratorGL
{
public:
    GeneratorGL();
    ~GeneratorGL();
    GeneratorGL(const GeneratorGL &) = delete;
    GeneratorGL &operator=(const GeneratorGL &) = delete;

    // The fragment shader resource of a generator ("mandelbrot" -> ":res/shader/mandelbrot_fshader.glsl",
    // "noise" method 5 -> ":res/shader/noise3D.glsl", ...); the double-precision variant with
    // precision Double.
    static QString fragmentShader(const GeneratorSettings &settings);

    // The palette to upload as the texture at the next draw.
    void setPalette(const Palette<uint> &palette);
    // Draws the quad covering the viewport with gray 0 (the palette's colours) or gray 1 (the
    // encoded value). aspectWidth x aspectHeight: the picture's size for the aspect stretch; the
    // preview passes 1 x 1 (unstretched). Builds the program of each fragment shader once, keeping
    // it until release(), and the texture as needed. False, with the compiler's or linker's log
    // in *error, when the program cannot be built.
    bool draw(const GeneratorSettings &settings, bool gray, int aspectWidth, int aspectHeight,
              QString *error = nullptr);
    // The same with another fragment shader than the settings' own (a resource or file path):
    // for tests and shaders under development.
    bool drawWith(const QString &fragmentShader, const GeneratorSettings &settings, bool gray, int aspectWidth,
                  int aspectHeight, QString *error = nullptr);
    // Frees the GL objects; the context they were made in must be current.
    void release();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
