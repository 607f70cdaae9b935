// Writes 24-bit RGB images as PNG files (zlib stream of stored blocks: no compression library).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace drvhost {

// `rgb` holds height rows of width * 3 bytes, top row first. Returns false when the file cannot
// be written.
bool WritePng(const std::wstring& path, uint32_t width, uint32_t height, const std::vector<uint8_t>& rgb);

}  // namespace drvhost
