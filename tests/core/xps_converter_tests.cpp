// The adjustments that the XPS document converter asks for before it renders a page.
#include "settings/private_devmode.h"
#include "tests/support/plugin_module.h"

#include <gtest/gtest.h>

#include <array>

using namespace zxtest;

namespace {

class XpsConverterTest : public testing::Test {
protected:
    XpsConverterTest() {
        devMode.dmSize = sizeof(DEVMODEW);
        devMode.dmPaperLength = 2970;
        devMode.dmPaperWidth = 2100;
        devMode.dmDuplex = DMDUP_SIMPLEX;
        block.dwSize = sizeof(block);
    }

    RECTL Adjusted(RECTL area, ULONG devModeSize = sizeof(DEVMODEW), ULONG blockSize = sizeof(VPrivateDevMode)) {
        EXPECT_EQ(S_OK, converter->AdjustImageableArea(nullptr, devModeSize, &devMode, blockSize, &block, &area));
        return area;
    }

    ComPtr<IPrintOemUIMXDC> converter = CreateXpsConverterObject();
    DEVMODEW devMode{};
    VPrivateDevMode block{};
};

// An A4 page in hundredths of a millimetre, and the area its printer can print on.
constexpr RECTL kWholePaper{0, 0, 210000, 297000}, kPrintable{3000, 3000, 207000, 290000};

std::array<LONG, 4> Edges(const RECTL& area) { return {area.left, area.top, area.right, area.bottom}; }

}  // namespace

TEST_F(XpsConverterTest, TwoSidedPagesGetATopMarginAsLargeAsTheBottomOneBorderlessOnesNone) {
    EXPECT_EQ(Edges(kPrintable), Edges(Adjusted(kPrintable)));  // one-sided
    for (short duplex : {short{DMDUP_VERTICAL}, short{DMDUP_HORIZONTAL}}) {
        devMode.dmDuplex = duplex;
        EXPECT_EQ(Edges({3000, 7000, 207000, 290000}), Edges(Adjusted(kPrintable)));
        EXPECT_EQ(Edges({3000, 8000, 207000, 290000}), Edges(Adjusted({3000, 8000, 207000, 290000})));
    }
    // A hostile rectangle cannot overflow the margin arithmetic.
    devMode.dmDuplex = DMDUP_VERTICAL;
    EXPECT_EQ(LONG_MAX, Adjusted({0, 0, 1, LONG_MIN}).top);

    // Borderless pages print to the paper's edges, two-sided or not.
    block.dwBorderless = 1;
    EXPECT_EQ(Edges(kWholePaper), Edges(Adjusted(kPrintable)));
    devMode.dmDuplex = DMDUP_SIMPLEX;
    EXPECT_EQ(Edges(kWholePaper), Edges(Adjusted(kPrintable)));
    // A private block too short to hold the borderless field counts as missing.
    EXPECT_EQ(Edges(kPrintable), Edges(Adjusted(kPrintable, sizeof(DEVMODEW), 24)));
}

TEST_F(XpsConverterTest, CompressionFollowsThePrintQualityAndResolutionIsForcedOnlyWhenTheBlockAsks) {
    const std::pair<short, INT> cases[] = {{300, 2}, {600, 4}, {DMRES_HIGH, 4}};
    for (const auto& [quality, compression] : cases) {
        devMode.dmPrintQuality = quality;
        INT mode = -1;
        EXPECT_EQ(S_OK, converter->AdjustImageCompression(nullptr, sizeof(devMode), &devMode, 0, nullptr, &mode));
        EXPECT_EQ(compression, mode) << "quality " << quality;
    }
    INT dpi = 600;
    EXPECT_EQ(S_OK, converter->AdjustDPI(nullptr, sizeof(devMode), &devMode, sizeof(block), &block, &dpi));
    EXPECT_EQ(600, dpi);
    block.dwForce300Dpi = 1;
    EXPECT_EQ(S_OK, converter->AdjustDPI(nullptr, sizeof(devMode), &devMode, sizeof(block), &block, &dpi));
    EXPECT_EQ(300, dpi);
    dpi = 600;
    EXPECT_EQ(S_OK, converter->AdjustDPI(nullptr, sizeof(devMode), &devMode, 0, nullptr, &dpi));
    EXPECT_EQ(600, dpi);
}

TEST_F(XpsConverterTest, MissingOrShortInputsChangeNothingAndStillSucceed) {
    RECTL area{1, 2, 3, 4};
    EXPECT_EQ(S_OK, converter->AdjustImageableArea(nullptr, sizeof(devMode), nullptr, 0, nullptr, &area));
    EXPECT_EQ(Edges({1, 2, 3, 4}), Edges(area));
    devMode.dmDuplex = DMDUP_VERTICAL;
    EXPECT_EQ(Edges(kPrintable), Edges(Adjusted(kPrintable, 64)));
    EXPECT_EQ(S_OK, converter->AdjustImageableArea(nullptr, sizeof(devMode), &devMode, 0, nullptr, nullptr));
    EXPECT_EQ(S_OK, converter->AdjustImageCompression(nullptr, 0, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(S_OK, converter->AdjustDPI(nullptr, 0, nullptr, sizeof(block), &block, nullptr));
}
