// The core driver's feature and option keywords that the plug-in reads and writes, visible and
// hidden, kept in one place. Keywords are 8-bit strings compared byte for byte.
#pragma once

namespace Feature {
inline constexpr char PaperSize[] = "PaperSize";
inline constexpr char MediaType[] = "MediaType";
inline constexpr char PageOutputQuality[] = "PageOutputQuality";
inline constexpr char Resolution[] = "Resolution";
inline constexpr char ZXMaxDpi[] = "ZXMaxDpi";
inline constexpr char InputBin[] = "InputBin";
inline constexpr char BorderlessPrint[] = "BorderlessPrint";
inline constexpr char Duplex[] = "Duplex";
inline constexpr char ZXPrintOnBothSidesManually[] = "ZXPrintOnBothSidesManually";
inline constexpr char ZXManualDuplexSupport[] = "ZXManualDuplexSupport";
inline constexpr char DuplexUnit[] = "DuplexUnit";
// Configuration items of the printer sheet.
inline constexpr char Tray2[] = "Tray2";
inline constexpr char PhotoTrayUnit[] = "PhotoTrayUnit";
inline constexpr char Autoconfig[] = "Autoconfig";
inline constexpr char DocumentMargins[] = "DocumentMargins";
inline constexpr char DocumentBinding[] = "DocumentBinding";
inline constexpr char DocumentNUp[] = "DocumentNUp";
inline constexpr char PresentationDirection[] = "PresentationDirection";
inline constexpr char JobNUpAllDocumentsContiguously[] = "JobNUpAllDocumentsContiguously";
inline constexpr char JobNUpContiguouslyPresentationOrder[] = "JobNUpContiguouslyPresentationOrder";
inline constexpr char DrawBorders[] = "DrawBorders";
inline constexpr char Orientation[] = "Orientation";
inline constexpr char DeviceLanguage[] = "DeviceLanguage";
inline constexpr char MediaTypePrev[] = "MediaTypePrev";
inline constexpr char OutputQualityPrev[] = "OutputQualityPrev";
inline constexpr char TouchByUser[] = "TouchByUser";
inline constexpr char SnappingData[] = "SnappingData";
inline constexpr char PS_Schema[] = "PS_Schema";
inline constexpr char PrintingShortcut[] = "PrintingShortcut";
inline constexpr char ShortcutBitmaps[] = "ShortcutBitmaps";
inline constexpr char AllSettingsfor_PS[] = "AllSettingsfor_PS";
inline constexpr char MonoConfig[] = "MonoConfig";
inline constexpr char BidiDefaults[] = "BidiDefaults";
inline constexpr char ZXDataCollectionXML[] = "ZXDataCollectionXML";
inline constexpr char ZXColorManagement[] = "ZXColorManagement";
}  // namespace Feature

namespace Option {
inline constexpr char CustomSize[] = "CUSTOMSIZE";
inline constexpr char Draft[] = "Draft";
inline constexpr char PCL[] = "PCL";
inline constexpr char PCLmS[] = "PCLmS";
inline constexpr char False[] = "FALSE";
inline constexpr char Off[] = "OFF";
inline constexpr char BorderlessOverspray[] = "BorderlessOverspray";
// The edge-to-edge paper sizes, which imply borderless printing.
inline constexpr char EdgeToEdgeA4[] = "ZX_EDGETOEDGE_A4";
inline constexpr char EdgeToEdgeLetter[] = "ZX_EDGETOEDGE_LETTER";
inline constexpr char EdgeToEdgeTabloid[] = "Edge_to_Edge_Tabloid";
inline constexpr char EdgeToEdgeA3[] = "Edge_to_Edge_A3";
}  // namespace Option
