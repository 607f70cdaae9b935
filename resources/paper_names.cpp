#include "resources/paper_names.h"

#include <cstring>
#include <iterator>

namespace zx {
namespace {

constexpr PaperNameRow kPaperNames[] = {
    {"ZX_10X15_CM", 112},
    {"ZX_13X18_CM", 116},
    {"ZX_2L_MM", 801},
    {"ZX_3X5_IN", 160},
    {"ZX_4X6_IN", 102},
    {"ZX_5X7_IN", 136},
    {"ZX_8X10_IN", 108},
    {"A4", 575},
    {"A5", 576},
    {"A6", 577},
    {"B5", 107},
    {"ZX_L_MM", 804},
    {"LETTER", 131},
    {"ZX_INDEX_CARD_3X5_IN", 132},
    {"ZX_INDEX_CARD_4X6_IN", 124},
    {"ZX_INDEX_CARD_5X8_IN", 125},
    {"ZX_SMMARG_11X14_IN", 599},
    {"ZX_SMMARG_12X12_IN", 146},
    {"ZX_SMMARG_A3", 191},
    {"ZX_SMMARG_A3_PLUS", 193},
    {"ZX_SMMARG_B4_JIS", 597},
    {"ZX_SMMARG_SUPER_B", 189},
    {"ZX_SMMARG_TABLOID", 190},
    {"EXECUTIVE", 583},
    {"STATEMENT", 587},
    {"LEGAL", 586},
    {"JAPANESE_POSTCARD", 868},
    {"ZX_OFUKU_HAGAKI_200X148_MM", 796},
    {"JENV_CHOU4", 585},
    {"JENV_CHOU3", 584},
    {"ENV_PERSONAL", 574},
    {"ENV_MONARCH", 582},
    {"ENV_10", 578},
    {"ZX_ENV_A2", 800},
    {"ENV_C6", 580},
    {"ENV_C5", 579},
    {"ENV_DL", 581},
    {"ZX_INDEX_CARD_LETTER", 902},
    {"ZX_INDEX_CARD_A4", 901},
    {"ZX_8_5X13_IN", 130},
    {"ZX_BRCHRE_11X14_IN", 598},
    {"ZX_PLAIN_11X14_IN", 812},
    {"ZX_BRCHRE_A3", 185},
    {"ZX_PLAIN_A3", 181},
    {"ZX_BRCHRE_B4_JIS", 810},
    {"ZX_PLAIN_B4_JIS", 811},
    {"Edge_to_Edge_A3", 594},
    {"ZX_EDGETOEDGE_A4", 903},
    {"ZX_EDGETOEDGE_LETTER", 904},
    {"Edge_to_Edge_Tabloid", 595},
    {"ZX_BRCHRE_TABLOID", 184},
    {"ZX_PLAIN_TABLOID", 596},
    {"ZX_B5_ISO_176X250_MM", 794},
    {"ZX_10X15_CM_4X6_IN", 813},
    {"ZX_4X6_IN_10X15_CM", 814},
    {"ZX_5X7_IN_13X18_CM", 815},
    {"ZX_3_5X5_IN_L_MM", 816},
    {"A3", 143},
    {"ZX_11X14_IN", 138},
    {"TABLOID", 194},
    {"B4", 195},
    {"ZX_4X5_IN_10X13_CM", 819},
};
static_assert(std::size(kPaperNames) == 62);

std::string_view KeywordOf(const PaperNameRow& row) noexcept {
    return {row.keyword, ::strnlen(row.keyword, sizeof(row.keyword))};
}

}  // namespace

std::span<const PaperNameRow> PaperNameRows() noexcept { return kPaperNames; }

std::optional<UINT> PaperStringId(std::string_view keyword) noexcept {
    for (const PaperNameRow& row : kPaperNames) {
        if (KeywordOf(row) == keyword) return static_cast<UINT>(row.stringId);
    }
    return std::nullopt;
}

}  // namespace zx
