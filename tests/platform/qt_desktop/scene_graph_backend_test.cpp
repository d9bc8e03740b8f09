#include "platform/qt/scene_graph_backend.h"

#include <gtest/gtest.h>

namespace brivanta {
namespace {

TEST(SceneGraphBackend, CpuRasterizersAreToldFromGpuDrivers)
{
    for (const char *cpu : { "llvmpipe (LLVM 15.0.6, 256 bits)", "softpipe", "Software Rasterizer",
             "Mesa X11 swrast", "SWR (LLVM 11.0.1, 256 bits)", "D3D12 (Microsoft Basic Render Driver)" })
        EXPECT_TRUE(isSoftwareRasterizer(cpu)) << cpu;
    for (const char *gpu : { "Mesa Intel(R) UHD Graphics 620 (KBL GT2)",
             "AMD Radeon RX 6600 (navi23, LLVM 15.0.6, DRM 3.49, 6.1.0-13-amd64)", "virgl (Virtio-GPU)",
             "SVGA3D; build: RELEASE; LLVM;", "" })
        EXPECT_FALSE(isSoftwareRasterizer(gpu)) << gpu;
}

TEST(SceneGraphBackend, SoftwareOnlyWithoutAGpuAndNeverOverTheUsersChoice)
{
    EXPECT_TRUE(prefersSoftwareSceneGraph(false, "llvmpipe (LLVM 15.0.6, 256 bits)"));
    EXPECT_TRUE(prefersSoftwareSceneGraph(false, "")) << "no OpenGL at all";
    EXPECT_FALSE(prefersSoftwareSceneGraph(false, "Mesa Intel(R) UHD Graphics 620 (KBL GT2)"));
    EXPECT_FALSE(prefersSoftwareSceneGraph(true, "llvmpipe (LLVM 15.0.6, 256 bits)"));
    EXPECT_FALSE(prefersSoftwareSceneGraph(true, ""));
}

} // namespace
} // namespace brivanta
