#include "render/gl/gl_context.h"

#include "fault.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <array>

namespace ZorvicRender {

using ZorvicUnit::Fault;
using ZorvicUnit::FaultKind;

struct HeadlessContext::Handles {
    EGLDisplay Display = EGL_NO_DISPLAY;
    EGLContext Context = EGL_NO_CONTEXT;

    ~Handles() {
        if (Display == EGL_NO_DISPLAY) return;
        eglMakeCurrent(Display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (Context != EGL_NO_CONTEXT) eglDestroyContext(Display, Context);
        // Without eglTerminate: the display is the process's, and its driver is not loaded a second time.
    }
};

namespace {

EGLDisplay OpenDisplay() {
    const EGLDisplay display =
        eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, reinterpret_cast<void*>(EGL_DEFAULT_DISPLAY), nullptr);
    if (display == EGL_NO_DISPLAY || eglInitialize(display, nullptr, nullptr) == EGL_FALSE)
        throw Fault(FaultKind::Internal, "this machine has no graphics without a display (EGL surfaceless)");
    return display;
}

}  // namespace

HeadlessContext::HeadlessContext() : Egl(std::make_unique<Handles>()) {
    Egl->Display = OpenDisplay();
    eglBindAPI(EGL_OPENGL_ES_API);
    constexpr std::array<EGLint, 5> Wanted = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE,
                                              EGL_OPENGL_ES2_BIT, EGL_NONE};
    constexpr std::array<EGLint, 3> Version = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    eglChooseConfig(Egl->Display, Wanted.data(), &config, 1, &count);
    if (count > 0) Egl->Context = eglCreateContext(Egl->Display, config, EGL_NO_CONTEXT, Version.data());
    if (Egl->Context == EGL_NO_CONTEXT ||
        eglMakeCurrent(Egl->Display, EGL_NO_SURFACE, EGL_NO_SURFACE, Egl->Context) == EGL_FALSE)
        throw Fault(FaultKind::Internal, "this machine has no OpenGL ES 2");
}

HeadlessContext::~HeadlessContext() = default;

}  // namespace ZorvicRender
