#include "generators/generatorgl.h"

#include "generators/shadersource.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLFunctions_2_1>
#include <QOpenGLShaderProgram>

#include <algorithm>
#include <array>
#include <map>
#include <vector>

#ifndef GL_DOUBLE_VEC2
#define GL_DOUBLE_VEC2 0x8FFC
#define GL_DOUBLE_VEC3 0x8FFD
#define GL_DOUBLE_VEC4 0x8FFE
#endif

namespace {

const QString vertexShader = QStringLiteral(":res/shader/default_vshader.glsl");

using Values = std::array<double, 4>;

// The double-precision uniform calls exist only in a context of version 4.0 or later; they are
// looked up when a program asks for a double.
using Uniform1d = void(QOPENGLF_APIENTRYP)(GLint, GLdouble);
using Uniform2d = void(QOPENGLF_APIENTRYP)(GLint, GLdouble, GLdouble);
using Uniform3d = void(QOPENGLF_APIENTRYP)(GLint, GLdouble, GLdouble, GLdouble);
using Uniform4d = void(QOPENGLF_APIENTRYP)(GLint, GLdouble, GLdouble, GLdouble, GLdouble);

struct ActiveUniform
{
    GLint location = -1;
    GLenum type = 0;
};

} // namespace

struct GeneratorGL::Private
{
    struct Program
    {
        std::unique_ptr<QOpenGLShaderProgram> program;
        std::map<QString, ActiveUniform> uniforms;
    };
    // Every program built in this context, by fragment shader: compiling and linking costs more
    // than a small render (a software driver compiles to machine code), and switching generators
    // back and forth should not pay it again.
    std::map<QString, Program> programs;
    Program *current = nullptr;

    GLuint texture = 0;
    bool paletteDirty = true;
    std::vector<uint8_t> paletteBytes{0, 0, 0, 255}; // RGBA per entry

    bool buildProgram(const QString &fragment, QString *error);
    void uploadPalette(QOpenGLFunctions_2_1 *f);
    void setUniform(QOpenGLFunctions_2_1 *f, const QString &name, const Values &v);
};

GeneratorGL::GeneratorGL() : d(std::make_unique<Private>()) {}

GeneratorGL::~GeneratorGL() = default;

QString GeneratorGL::fragmentShader(const GeneratorSettings &settings)
{
    const QString dir = QStringLiteral(":res/shader/");
    const QString &name = settings.name;
    const bool fp64 = settings.precision == GeneratorSettings::Double;
    if (name == QLatin1String("mandelbrot"))
        return dir + (fp64 ? "mandelbrot_fshader_fp64.glsl" : "mandelbrot_fshader.glsl");
    if (settings.isEscapeTime()) {
        if (fp64)
            return dir + "julia_fshader_fp64.glsl";
        return dir + (name == QLatin1String("plasma") ? "julia_fshader.txt" : "julia_fshader.glsl");
    }
    if (name == QLatin1String("noise")) {
        static const char *const bases[] = {"cellular2D", "cellular3D", "classicnoise2D",
                                            "classicnoise3D", "noise2D", "noise3D"};
        return dir + bases[std::clamp(settings.method, 0, 5)] + ".glsl";
    }
    if (name == QLatin1String("gradient")) {
        static const char *const shapes[] = {"gradient_radial", "gradient_linear", "gradient_rectangle"};
        return dir + shapes[std::clamp(settings.method, 0, 2)] + ".glsl";
    }
    if (name == QLatin1String("apollonian"))
        return dir + "apollonian.glsl";
    return dir + "moiree.glsl";
}

void GeneratorGL::setPalette(const Palette<uint> &palette)
{
    std::vector<uint8_t> bytes;
    bytes.reserve(size_t(std::max(palette.size(), 1)) * 4);
    for (int i = 0; i < palette.size(); ++i) {
        const auto &c = palette[i];
        for (uint component : {c.r, c.g, c.b, c.a})
            bytes.push_back(uint8_t((component >> 8) & 0xFF));
    }
    // An empty palette still needs a texel for the sampler to read.
    if (bytes.empty())
        bytes = {0, 0, 0, 255};
    d->paletteBytes = std::move(bytes);
    d->paletteDirty = true;
}

bool GeneratorGL::Private::buildProgram(const QString &fragment, QString *error)
{
    const auto cached = programs.find(fragment);
    if (cached != programs.end()) {
        current = &cached->second;
        return true;
    }
    current = nullptr;
    const QByteArray fragmentText = ShaderSource::load(fragment, error);
    if (fragmentText.isEmpty())
        return false;
    auto p = std::make_unique<QOpenGLShaderProgram>();
    const bool built = p->addShaderFromSourceFile(QOpenGLShader::Vertex, vertexShader)
                       && p->addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentText) && p->link();
    if (!built) {
        if (error)
            *error = QStringLiteral("The shader %1 cannot be built:\n%2").arg(fragment, p->log().trimmed());
        return false;
    }
    current = &programs[fragment];
    current->program = std::move(p);
    return true;
}

void GeneratorGL::Private::uploadPalette(QOpenGLFunctions_2_1 *f)
{
    if (texture == 0) {
        f->glGenTextures(1, &texture);
        paletteDirty = true;
    }
    f->glActiveTexture(GL_TEXTURE0);
    f->glBindTexture(GL_TEXTURE_1D, texture);
    if (paletteDirty) {
        f->glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        f->glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        f->glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_WRAP_S, GL_REPEAT);
        GLint maxSize = 0;
        f->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxSize);
        const int entries = int(paletteBytes.size() / 4);
        if (maxSize > 0 && entries > maxSize) {
            // Wider than the driver's textures: every texel takes the entry a nearest lookup of
            // the full palette would have found at its centre.
            std::vector<uint8_t> reduced(size_t(maxSize) * 4);
            for (int i = 0; i < maxSize; ++i) {
                const int src = int((qint64(i) * 2 + 1) * entries / (qint64(maxSize) * 2));
                std::copy_n(paletteBytes.begin() + src * 4, 4, reduced.begin() + i * 4);
            }
            f->glTexImage1D(GL_TEXTURE_1D, 0, GL_RGBA, maxSize, 0, GL_RGBA, GL_UNSIGNED_BYTE, reduced.data());
        } else {
            f->glTexImage1D(GL_TEXTURE_1D, 0, GL_RGBA, entries, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                            paletteBytes.data());
        }
        paletteDirty = false;
    }
    f->glEnable(GL_TEXTURE_1D);
}

void GeneratorGL::Private::setUniform(QOpenGLFunctions_2_1 *f, const QString &name, const Values &v)
{
    const std::map<QString, ActiveUniform> &uniforms = current->uniforms;
    const auto it = uniforms.find(name);
    if (it == uniforms.end())
        return;
    const GLint at = it->second.location;
    const auto i = [&](int k) { return GLint(v[size_t(k)]); };
    const auto x = [&](int k) { return GLfloat(v[size_t(k)]); };
    QOpenGLContext *context = QOpenGLContext::currentContext();
    switch (it->second.type) {
    case GL_FLOAT: f->glUniform1f(at, x(0)); break;
    case GL_FLOAT_VEC2: f->glUniform2f(at, x(0), x(1)); break;
    case GL_FLOAT_VEC3: f->glUniform3f(at, x(0), x(1), x(2)); break;
    case GL_FLOAT_VEC4: f->glUniform4f(at, x(0), x(1), x(2), x(3)); break;
    case GL_INT:
    case GL_BOOL:
    case GL_SAMPLER_1D: f->glUniform1i(at, i(0)); break;
    case GL_INT_VEC2:
    case GL_BOOL_VEC2: f->glUniform2i(at, i(0), i(1)); break;
    case GL_INT_VEC3:
    case GL_BOOL_VEC3: f->glUniform3i(at, i(0), i(1), i(2)); break;
    case GL_INT_VEC4:
    case GL_BOOL_VEC4: f->glUniform4i(at, i(0), i(1), i(2), i(3)); break;
    case GL_DOUBLE:
        if (auto u = reinterpret_cast<Uniform1d>(context->getProcAddress("glUniform1d")))
            u(at, v[0]);
        break;
    case GL_DOUBLE_VEC2:
        if (auto u = reinterpret_cast<Uniform2d>(context->getProcAddress("glUniform2d")))
            u(at, v[0], v[1]);
        break;
    case GL_DOUBLE_VEC3:
        if (auto u = reinterpret_cast<Uniform3d>(context->getProcAddress("glUniform3d")))
            u(at, v[0], v[1], v[2]);
        break;
    case GL_DOUBLE_VEC4:
        if (auto u = reinterpret_cast<Uniform4d>(context->getProcAddress("glUniform4d")))
            u(at, v[0], v[1], v[2], v[3]);
        break;
    default: break; // a type no setting maps to
    }
}

bool GeneratorGL::draw(const GeneratorSettings &settings, bool gray, int aspectWidth, int aspectHeight,
                       QString *error)
{
    return drawWith(fragmentShader(settings), settings, gray, aspectWidth, aspectHeight, error);
}

bool GeneratorGL::drawWith(const QString &fragment, const GeneratorSettings &settings, bool gray, int aspectWidth,
                           int aspectHeight, QString *error)
{
    QOpenGLContext *context = QOpenGLContext::currentContext();
    auto *f = context ? context->versionFunctions<QOpenGLFunctions_2_1>() : nullptr;
    if (!f || !f->initializeOpenGLFunctions()) {
        if (error)
            *error = QStringLiteral("No OpenGL context with the functions of OpenGL 2.1 is current.");
        return false;
    }
    if (!d->buildProgram(fragment, error))
        return false;
    QOpenGLShaderProgram &program = *d->current->program;
    std::map<QString, ActiveUniform> &uniforms = d->current->uniforms;
    if (uniforms.empty()) {
        // Each uniform is set in the type its shader declares, so a shader may take an offset as
        // vec2 or vec4, in float or in double.
        GLint count = 0;
        f->glGetProgramiv(program.programId(), GL_ACTIVE_UNIFORMS, &count);
        for (GLint k = 0; k < count; ++k) {
            char name[256] = {};
            GLsizei length = 0;
            GLint size = 0;
            GLenum type = 0;
            f->glGetActiveUniform(program.programId(), GLuint(k), sizeof name, &length, &size, &type, name);
            QString key = QString::fromLatin1(name, length);
            if (key.endsWith(QLatin1String("[0]")))
                key.chop(3);
            uniforms[key] = {f->glGetUniformLocation(program.programId(), name), type};
        }
    }

    f->glClearColor(0, 0, 0, 0);
    f->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    d->uploadPalette(f);
    program.bind();
    const GeneratorSettings &s = settings;
    d->setUniform(f, QStringLiteral("tex"), {0, 0, 0, 0});
    d->setUniform(f, QStringLiteral("gray"), {gray ? 1.0 : 0.0, 0, 0, 0});
    d->setUniform(f, QStringLiteral("iter"), {double(s.iterations), 0, 0, 0});
    d->setUniform(f, QStringLiteral("norm"), {s.norm, 0, 0, 0});
    d->setUniform(f, QStringLiteral("zoom"), {s.zoom, 0, 0, 0});
    d->setUniform(f, QStringLiteral("c"), {s.cr, s.ci, 0, 0});
    d->setUniform(f, QStringLiteral("smooth"), {s.smooth ? 1.0 : 0.0, 0, 0, 0});
    // "smooth" is a keyword from GLSL 1.30 on: the double-precision shaders call it "smoothing".
    d->setUniform(f, QStringLiteral("smoothing"), {s.smooth ? 1.0 : 0.0, 0, 0, 0});
    d->setUniform(f, QStringLiteral("off"), {s.xoff, s.yoff, s.zoff, 0});
    d->setUniform(f, QStringLiteral("scale"), {s.xadd, s.yadd, 1, 1});
    d->setUniform(f, QStringLiteral("p1"), {0.5, 0.5, 0, 0});
    d->setUniform(f, QStringLiteral("p2"), {0, 0, 0, 0});
    d->setUniform(f, QStringLiteral("iResolution"), {1, 1, 0, 0});
    d->setUniform(f, QStringLiteral("iMouse"), {0, 0, 0, 0});
    d->setUniform(f, QStringLiteral("iTime"), {0, 0, 0, 0});

    // The caller's projection stays (the off-screen renderer shifts it to draw a tile); the
    // model-view keeps the picture's proportions.
    f->glMatrixMode(GL_MODELVIEW);
    f->glLoadIdentity();
    const int w = std::max(aspectWidth, 1);
    const int h = std::max(aspectHeight, 1);
    if (w >= h)
        f->glScaled(1.0, double(w) / h, 1.0);
    else
        f->glScaled(double(h) / w, 1.0, 1.0);
    f->glBegin(GL_QUADS);
    f->glTexCoord2f(0, 0);
    f->glVertex2f(-1, -1);
    f->glTexCoord2f(1, 0);
    f->glVertex2f(1, -1);
    f->glTexCoord2f(1, 1);
    f->glVertex2f(1, 1);
    f->glTexCoord2f(0, 1);
    f->glVertex2f(-1, 1);
    f->glEnd();
    program.release();
    return true;
}

void GeneratorGL::release()
{
    QOpenGLContext *context = QOpenGLContext::currentContext();
    if (d->texture != 0 && context)
        context->functions()->glDeleteTextures(1, &d->texture);
    d->texture = 0;
    d->paletteDirty = true;
    d->current = nullptr;
    d->programs.clear();
}
