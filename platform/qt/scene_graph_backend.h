#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace brivanta {

// The OpenGL renderer of this display ("llvmpipe (LLVM 15.0.6, 256 bits)"), read from a throwaway
// context; empty when OpenGL cannot be used at all. Needs the QGuiApplication.
QByteArray openGLRendererName();

// Whether that renderer draws on the CPU: Mesa's llvmpipe, softpipe and swrast, OpenSWR, and Windows'
// basic render driver. A GPU driver built with LLVM ("AMD Radeon …, LLVM 15.0.6") is not one.
bool isSoftwareRasterizer(QByteArrayView renderer);

// Whether the machine shows a GPU to user space under devRoot (normally /dev): a DRM render node
// (dri/renderD*, which every Mesa GPU driver and NVIDIA's DRM module make) or one of NVIDIA's own device
// nodes (nvidia0, …). Without one, OpenGL can only be a CPU rasterizer.
bool hasGpuDeviceNode(const QString &devRoot);

// Whether the window should draw with Qt Quick's software renderer: never when the user picked a
// backend (QT_QUICK_BACKEND, QSG_RHI_BACKEND), otherwise when there is no OpenGL or only a CPU
// rasterizer behind it.
bool prefersSoftwareSceneGraph(bool userPickedBackend, QByteArrayView renderer);

// Applies that choice for the windows made from now on; call after the QGuiApplication and before
// the first Qt Quick window.
void chooseSceneGraphBackend();

} // namespace brivanta
