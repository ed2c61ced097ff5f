#!/usr/bin/env python3
"""The proofs of the house must be able to fail: each fault that they look for, made in a small tree, is found."""
import pathlib
import tempfile
import unittest

import exports
import layers

# Headers that the faults may include.
TREE = {
    "pkg/RK/host/KIT.h": "",
    "pkg/RK/indep/frame/RK.h": "",
    "pkg/RK/indep/frame/RK_Other.h": "",
    "pkg/RK/indep/frame/RKp_Depth.h": "",
    "pkg/RK/indep/world/RK_World.h": "",
    "pkg/RK/indep/passes/RK_Fill.h": "",
    "pkg/RK/indep/passes/RKp_Scans.h": "",
    "pkg/RK/indep/composite/RK_Xfer.h": "",
    "pkg/RK/indep/composite/RKp_Rows.h": "",
    "pkg/RK/indep/colour/RK_Profiles.h": "",
    "pkg/RK/indep/retime/FnTexture.h": "",
    "refhost/RefHost.h": "",
}


def faults(path, included):
    """What is said of one more file that includes that."""
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for name, text in {**TREE, path: f'#include "{included}"\n'}.items():
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).write_text(text, encoding="utf-8")
        return layers.check(root)


class Layers(unittest.TestCase):
    def allowed(self, path, included):
        self.assertEqual(faults(path, included), [])

    def refused(self, path, included):
        self.assertEqual(len(faults(path, included)), 1)

    def test_headers_look_downwards(self):
        self.allowed("pkg/RK/indep/composite/RK_A.h", "RK/indep/passes/RK_Fill.h")
        self.refused("pkg/RK/indep/passes/RK_A.h", "RK/indep/composite/RK_Xfer.h")
        self.refused("pkg/RK/indep/frame/RKp_A.h", "RK/indep/world/RK_World.h")
        self.refused("pkg/RK/indep/colour/RK_A.h", "RK/indep/passes/RK_Fill.h")
        self.refused("pkg/RK/indep/filter/RK_A.h", "RK/indep/colour/RK_Profiles.h")

    def test_sources_see_every_public_header(self):
        self.allowed("pkg/RK/indep/passes/RK_A.cpp", "RK/indep/composite/RK_Xfer.h")

    def test_private_headers_are_their_folders_own(self):
        self.refused("pkg/RK/indep/composite/RKp_A.h", "RK/indep/passes/RKp_Scans.h")
        self.refused("pkg/RK/indep/composite/RK_A.cpp", "RK/indep/passes/RKp_Scans.h")
        self.allowed("pkg/RK/indep/composite/RK_A.cpp", "RK/indep/composite/RKp_Rows.h")
        self.allowed("pkg/RK/indep/composite/RK_A.cpp", "RK/indep/frame/RKp_Depth.h")
        self.allowed("pkg/RK/indep/frame/RK_OverFuncs.cpp", "RK/indep/passes/RKp_Scans.h")

    def test_public_headers_include_no_private_ones(self):
        self.refused("pkg/RK/indep/composite/RK_A.h", "RK/indep/frame/RKp_Depth.h")
        self.allowed("pkg/RK/indep/composite/RKp_A.h", "RK/indep/frame/RKp_Depth.h")

    def test_retime_stands_alone(self):
        self.allowed("pkg/RK/indep/retime/FnA.h", "RK/indep/frame/RK.h")
        self.allowed("pkg/RK/indep/retime/FnA.cpp", "RK/host/KIT.h")
        self.refused("pkg/RK/indep/retime/FnA.h", "RK/indep/frame/RK_Other.h")
        self.refused("pkg/RK/indep/retime/FnA.cpp", "RK/indep/world/RK_World.h")
        self.allowed("pkg/RK/indep/retime/RK_A.cpp", "RK/indep/world/RK_World.h")
        self.refused("pkg/RK/indep/retime/RK_A.h", "RK/indep/world/RK_World.h")
        self.refused("pkg/RK/indep/world/RK_A.h", "RK/indep/retime/FnTexture.h")

    def test_the_hosts_headers_stand_alone(self):
        self.allowed("pkg/RK/host/A.h", "RK/host/KIT.h")
        self.refused("pkg/RK/host/A.h", "RK/indep/frame/RK.h")
        self.refused("refhost/A.cpp", "RK/indep/frame/RK.h")
        self.allowed("refhost/A.cpp", "refhost/RefHost.h")
        self.refused("pkg/RK/indep/world/RK_A.cpp", "refhost/RefHost.h")

    def test_tool_and_modules_keep_to_public_headers(self):
        for folder in ("tool", "modules", "modules/examples"):
            self.refused(f"{folder}/A.cpp", "RK/indep/frame/RKp_Depth.h")
            self.allowed(f"{folder}/A.cpp", "RK/indep/world/RK_World.h")

    def test_what_is_not_there_is_told(self):
        self.refused("pkg/RK/indep/world/RK_A.h", "RK/indep/frame/RK_Gone.h")
        self.refused("pkg/RK/indep/world/RK_A.h", "RK/indep/wordl/RK_World.h")


class Exports(unittest.TestCase):
    def test_foreign_names_are_told(self):
        own = ["RK_Birth()", "RKp_G_OverFuncs", "vtable for RK_World", "long RK_BlendPipeline<RK_Pixel8>(int)",
               "RK_WorldX<RK_Pixel8>::Depth() const", "RKp_WorldDepth(RK_LayerDef const*)",
               "typeinfo name for KIT_MemTrackedObject"]
        leaks = ["RKp_Helper()", "void std::vector<int>::resize()", "typeinfo for std::exception", "helper",
                 "RKp_Scan<RK_Pixel8>::run()", "std::map<RK_World*, int>::find(RK_World*)"]
        self.assertEqual(exports.foreign(own), [])
        self.assertEqual(exports.foreign(leaks), leaks)

    def test_differences_are_told_both_ways(self):
        self.assertEqual(exports.differences(["RK_A", "RK_B"], ["RK_A", "RK_B"]), [])
        self.assertEqual(len(exports.differences(["RK_A", "RK_B"], ["RK_B", "RK_C"])), 2)


if __name__ == "__main__":
    unittest.main()
