#include "render/gl/compositor.h"

#include "fault.h"

#include <GLES2/gl2.h>

#include <array>
#include <cmath>
#include <string>

namespace ZorvicRender {

using ZorvicUnit::Fault;
using ZorvicUnit::FaultKind;

namespace {

constexpr GLuint CornerAttribute = 0;
constexpr GLuint PixelAttribute = 1;

constexpr auto VertexShader = R"(
attribute vec2 corner;
attribute vec2 pixel;
varying vec2 at;
void main() {
    at = pixel;
    gl_Position = vec4(corner, 0.0, 1.0);
})";

// Alpha is straight in the picture and premultiplied in the output.
constexpr auto FragmentShader = R"(
precision mediump float;
varying highp vec2 at;
uniform sampler2D picture;
uniform mat3 colours;
uniform vec3 offset;
uniform float light;
uniform float opacity;
void main() {
    vec4 texel = texture2D(picture, at);
    vec3 rgb = clamp(colours * texel.rgb + offset, 0.0, 1.0) * light;
    float alpha = texel.a * opacity;
    gl_FragColor = vec4(rgb * alpha, alpha);
})";

GLuint Compile(GLenum kind, const char* text) {
    const GLuint shader = glCreateShader(kind);
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    GLint done = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &done);
    if (done == GL_TRUE) return shader;
    std::array<char, 512> reason{};
    glGetShaderInfoLog(shader, reason.size(), nullptr, reason.data());
    throw Fault(FaultKind::Internal, std::string("the graphics driver refuses a shader: ") + reason.data());
}

GLuint MakeProgram() {
    const GLuint program = glCreateProgram();
    for (const GLuint shader : {Compile(GL_VERTEX_SHADER, VertexShader), Compile(GL_FRAGMENT_SHADER, FragmentShader)}) {
        glAttachShader(program, shader);
        glDeleteShader(shader);
    }
    glBindAttribLocation(program, CornerAttribute, "corner");
    glBindAttribLocation(program, PixelAttribute, "pixel");
    glLinkProgram(program);
    GLint done = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &done);
    if (done != GL_TRUE) throw Fault(FaultKind::Internal, "the graphics driver can not link its shaders");
    return program;
}

GLuint MakeTexture() {
    GLuint name = 0;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    return name;
}

struct Corner {
    float X;
    float Y;
    float U;
    float V;
};

// The corners in the order of a triangle strip. Turned clockwise, the picture's first corner comes to lie at the right.
std::array<Corner, 4> Corners(const DrawItem& item) {
    constexpr std::array<std::array<float, 2>, 4> Around = {
        {{0, 0}, {1, 0}, {1, 1}, {0, 1}}};  // clockwise from top left
    constexpr std::array<std::size_t, 4> Strip = {0, 3, 1, 2};
    std::array<Corner, 4> corners{};
    for (std::size_t i = 0; i < Strip.size(); ++i) {
        const auto& place = Around[Strip[i]];
        const auto& pixel = Around[(Strip[i] + 4 - static_cast<std::size_t>(item.Shown->Turns)) % 4];
        const double x = item.Place.X + place[0] * item.Place.Width;
        const double y = item.Place.Y + place[1] * item.Place.Height;
        corners[i] = {static_cast<float>(2 * x - 1), static_cast<float>(1 - 2 * y), pixel[0], pixel[1]};
    }
    return corners;
}

void SetBlending(const DrawItem& item) {
    if (item.Shown->Opaque && item.Opacity >= 1) {
        glDisable(GL_BLEND);
        return;
    }
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
}

}  // namespace

Compositor::Compositor() : Program(MakeProgram()) {
    Colours = glGetUniformLocation(Program, "colours");
    Offset = glGetUniformLocation(Program, "offset");
    Light = glGetUniformLocation(Program, "light");
    Opacity = glGetUniformLocation(Program, "opacity");
}

Compositor::~Compositor() {
    for (const auto& [source, texture] : Textures)
        glDeleteTextures(1, &texture.Name);
    glDeleteProgram(Program);
}

void Compositor::Draw(const DrawList& list, PixelSize framebuffer, const Area& place) {
    glDisable(GL_SCISSOR_TEST);
    glViewport(0, 0, framebuffer.Width, framebuffer.Height);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    const auto left = static_cast<GLint>(std::lround(place.X));
    const auto bottom = static_cast<GLint>(std::lround(framebuffer.Height - place.Y - place.Height));
    const auto width = static_cast<GLsizei>(std::lround(place.Width));
    const auto height = static_cast<GLsizei>(std::lround(place.Height));
    glViewport(left, bottom, width, height);
    glEnable(GL_SCISSOR_TEST);
    glScissor(left, bottom, width, height);
    glUseProgram(Program);
    for (const DrawItem& item : list) {
        BindTexture(item);
        SetBlending(item);
        const auto corners = Corners(item);
        glUniformMatrix3fv(Colours, 1, GL_FALSE, item.Colours.Matrix.data());
        glUniform3fv(Offset, 1, item.Colours.Offset.data());
        glUniform1f(Light, item.Light);
        glUniform1f(Opacity, item.Opacity);
        glEnableVertexAttribArray(CornerAttribute);
        glEnableVertexAttribArray(PixelAttribute);
        glVertexAttribPointer(CornerAttribute, 2, GL_FLOAT, GL_FALSE, sizeof(Corner), &corners[0].X);
        glVertexAttribPointer(PixelAttribute, 2, GL_FLOAT, GL_FALSE, sizeof(Corner), &corners[0].U);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    }
    glDisable(GL_SCISSOR_TEST);
}

void Compositor::BindTexture(const DrawItem& item) {
    Texture& texture = Textures[item.Source];
    texture.Used = true;
    if (texture.Name == 0) texture.Name = MakeTexture();
    glBindTexture(GL_TEXTURE_2D, texture.Name);
    if (texture.Held == item.Shown) return;
    const bool fits = texture.Held && texture.Held->Size == item.Shown->Size;
    const auto [width, height] = item.Shown->Size;
    const void* pixels = item.Shown->Pixels.data();
    if (fits) {
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    } else {
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    }
    texture.Held = item.Shown;
}

void Compositor::DropUnused() {
    for (auto it = Textures.begin(); it != Textures.end();) {
        if (std::exchange(it->second.Used, false)) {
            ++it;
            continue;
        }
        glDeleteTextures(1, &it->second.Name);
        it = Textures.erase(it);
    }
}

Canvas::Canvas(PixelSize size) : Extent(size), Texture(MakeTexture()) {
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, size.Width, size.Height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glGenFramebuffers(1, &Framebuffer);
    Bind();
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, Texture, 0);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
        throw Fault(FaultKind::Internal, "the graphics driver refuses a picture of " + std::to_string(size.Width) +
                                             "x" + std::to_string(size.Height));
}

Canvas::~Canvas() {
    glDeleteFramebuffers(1, &Framebuffer);
    glDeleteTextures(1, &Texture);
}

void Canvas::Bind() const {
    glBindFramebuffer(GL_FRAMEBUFFER, Framebuffer);
}

std::vector<std::uint8_t> Canvas::Read() const {
    Bind();
    const auto row = static_cast<std::size_t>(Extent.Width) * 4;
    const auto rows = static_cast<std::size_t>(Extent.Height);
    std::vector<std::uint8_t> fromBottom(row * rows);
    std::vector<std::uint8_t> pixels(row * rows);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, Extent.Width, Extent.Height, GL_RGBA, GL_UNSIGNED_BYTE, fromBottom.data());
    for (std::size_t y = 0; y < rows; ++y)
        std::copy_n(fromBottom.begin() + static_cast<std::ptrdiff_t>((rows - 1 - y) * row), row,
                    pixels.begin() + static_cast<std::ptrdiff_t>(y * row));
    return pixels;
}

}  // namespace ZorvicRender
