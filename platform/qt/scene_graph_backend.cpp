#include "platform/qt/scene_graph_backend.h"

#include <QDir>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQuickWindow>
#include <QtGlobal>

namespace brivanta {

QByteArray openGLRendererName()
{
    QOpenGLContext context;
    if (!context.create())
        return QByteArray();
    QOffscreenSurface surface;
    surface.setFormat(context.format());
    surface.create();
    if (!surface.isValid() || !context.makeCurrent(&surface))
        return QByteArray();
    const auto *name = reinterpret_cast<const char *>(context.functions()->glGetString(GL_RENDERER));
    QByteArray renderer(name ? name : "");
    context.doneCurrent();
    return renderer;
}

bool isSoftwareRasterizer(QByteArrayView renderer)
{
    const QByteArray lower = renderer.toByteArray().toLower();
    for (const char *name :
        { "llvmpipe", "softpipe", "software rasterizer", "swrast", "microsoft basic render" }) {
        if (lower.contains(name))
            return true;
    }
    // OpenSWR names itself "SWR (LLVM …)"; match the word, not the letters inside another name.
    return lower.startsWith("swr ") || lower == "swr";
}

bool hasGpuDeviceNode(const QString &devRoot)
{
    const QDir dev(devRoot);
    return !dev.entryList({ QStringLiteral("nvidia[0-9]*") }, QDir::System | QDir::Files).isEmpty()
        || !QDir(dev.filePath(QStringLiteral("dri")))
                .entryList({ QStringLiteral("renderD*") }, QDir::System | QDir::Files)
                .isEmpty();
}

bool prefersSoftwareSceneGraph(bool userPickedBackend, QByteArrayView renderer)
{
    if (userPickedBackend)
        return false;
    return renderer.isEmpty() || isSoftwareRasterizer(renderer);
}

void chooseSceneGraphBackend()
{
    // Without a GPU (virtual machines, Xvfb, remote sessions) OpenGL is a CPU rasterizer that JIT-compiles
    // every shader on first use and runs the shadows' effects on the CPU; Qt Quick's own software renderer
    // draws this UI in a fraction of the time. The shadows are left out there.
    if (qEnvironmentVariableIsSet("QT_QUICK_BACKEND") || qEnvironmentVariableIsSet("QSG_RHI_BACKEND"))
        return; // the user's choice, and no need to probe OpenGL
    // Without a GPU device the answer is known, and asking OpenGL would load and start Mesa's rasterizer
    // (some 60 MB resident, never freed) only to hear it.
    if (!hasGpuDeviceNode(QStringLiteral("/dev")) || prefersSoftwareSceneGraph(false, openGLRendererName()))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

} // namespace brivanta
