// Names that people type, and lines that they read.
#include <gtest/gtest.h>

#include "Exif.h"
#include "Failure.h"
#include "ModeNames.h"
#include "PictureFile.h"

namespace {

TEST(ModeNames, AreFoundInAnyCaseWithOrWithoutDashes) {
    for (const char* name : {"soft-light", "SoftLight", "SOFT_LIGHT", "soft light", "softlight"}) {
        EXPECT_EQ(ModeOfName(name).number, RK_Xfer_SoftLight) << name;
    }
    EXPECT_EQ(ModeOfName("lighter-color").number, RK_Xfer_LighterColour);
    EXPECT_EQ(ModeOfName("Colour").number, RK_Xfer_Colour);
}

TEST(ModeNames, EveryModeIsFoundByItsOwnName) {
    EXPECT_EQ(Modes().size(), 39u);
    for (const Mode& mode : Modes()) EXPECT_EQ(ModeOfName(mode.name).number, mode.number);
}

std::string Refusal(const std::string& name) {
    try {
        ModeOfName(name);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status, kExitMisuse);
        return failure.what();
    }
    return "";
}

TEST(ModeNames, AnUnknownOneNamesItsNeighbours) {
    EXPECT_EQ(Refusal("multipy"), "unknown mode 'multipy'; did you mean multiply?");
    EXPECT_EQ(Refusal("ovre"), "unknown mode 'ovre'; did you mean over?");
    EXPECT_EQ(Refusal("burn2").find("unknown mode 'burn2'; did you mean burn"), 0u);
    EXPECT_EQ(Refusal("light").find("unknown mode 'light'; did you mean"), 0u);
    EXPECT_EQ(Refusal("xyzzy-plugh"), "unknown mode 'xyzzy-plugh'; rk modes lists them");
    EXPECT_EQ(Refusal("none").find("unknown mode 'none'"), 0u) << "the refused mode is no mode";
    EXPECT_EQ(Refusal(""), "unknown mode ''; rk modes lists them");
}

TEST(OneLine, WritesControlCharactersAsEscapes) {
    EXPECT_EQ(OneLine("a\nb\x1b[31m\x7f"), "a\\nb\\x1b[31m\\x7f");
    EXPECT_EQ(OneLine("Blüte"), "Blüte");
}

TEST(Formats, AreKnownByExtensionInAnyCase) {
    EXPECT_EQ(FormatOfPath("a.b/picture.PNG"), &kFormatPNG);
    EXPECT_EQ(FormatOfPath("x.jpeg"), &kFormatJPEG);
    EXPECT_EQ(FormatOfPath("x.Tif"), &kFormatTIFF);
    EXPECT_EQ(FormatOfPath("x.exr"), &kFormatEXR);
    EXPECT_EQ(FormatOfPath("a.png/picture"), nullptr);
    EXPECT_EQ(FormatOfPath("picture"), nullptr);
    EXPECT_EQ(FormatOfPath("picture.gif"), nullptr);
}

// One directory with the orientation, in either byte order.
std::vector<uint8_t> Exif(bool big, uint8_t orientation) {
    if (big)
        return {'M', 'M', 0, 42, 0, 0, 0,           8, 0, 1, 1, 0x12, 0,
                3,   0,   0, 0,  1, 0, orientation, 0, 0, 0, 0, 0,    0};
    return {'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0, 0x12, 1, 3, 0, 1, 0, 0, 0, orientation, 0, 0, 0, 0, 0, 0, 0};
}

TEST(Exif, TellsTheOrientationInBothByteOrders) {
    for (const bool big : {false, true}) {
        const std::vector<uint8_t> block = Exif(big, 6);
        EXPECT_EQ(ExifOrientation(block.data(), block.size()), 6);
    }
}

TEST(Exif, DamagedBlocksCountAsUpright) {
    const std::vector<uint8_t> whole = Exif(false, 6);
    for (size_t cut = 0; cut < 20; ++cut) {
        const std::vector<uint8_t> part(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(cut));
        EXPECT_EQ(ExifOrientation(part.data(), part.size()), 1) << cut;
    }
    std::vector<uint8_t> wild = whole;
    wild[4] = wild[5] = wild[6] = wild[7] = 0xFF;
    EXPECT_EQ(ExifOrientation(wild.data(), wild.size()), 1);
    wild = Exif(false, 9);
    EXPECT_EQ(ExifOrientation(wild.data(), wild.size()), 1);
}

}  // namespace
