#include "drvhost/png_writer.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace drvhost {
namespace {

uint32_t Crc32(const uint8_t* data, size_t size, uint32_t crc = 0) {
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> values{};
        for (uint32_t n = 0; n < 256; ++n) {
            uint32_t c = n;
            for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            values[n] = c;
        }
        return values;
    }();
    crc = ~crc;
    for (size_t i = 0; i < size; ++i) crc = table[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

uint32_t Adler32(const std::vector<uint8_t>& data) {
    uint32_t a = 1, b = 0;
    for (uint8_t byte : data) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    return (b << 16) | a;
}

void PutBigEndian(std::vector<uint8_t>& out, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<uint8_t>(value >> shift));
}

void PutChunk(std::vector<uint8_t>& file, const char type[4], const std::vector<uint8_t>& data) {
    PutBigEndian(file, static_cast<uint32_t>(data.size()));
    const size_t typeStart = file.size();
    file.insert(file.end(), type, type + 4);
    file.insert(file.end(), data.begin(), data.end());
    PutBigEndian(file, Crc32(file.data() + typeStart, 4 + data.size()));
}

// A zlib stream whose deflate blocks are stored, 65535 bytes at most each.
std::vector<uint8_t> StoredZlib(const std::vector<uint8_t>& raw) {
    std::vector<uint8_t> out = {0x78, 0x01};
    size_t offset = 0;
    do {
        const size_t length = std::min<size_t>(65535, raw.size() - offset);
        const bool last = offset + length == raw.size();
        out.push_back(last ? 1 : 0);
        out.push_back(static_cast<uint8_t>(length & 0xFF));
        out.push_back(static_cast<uint8_t>(length >> 8));
        out.push_back(static_cast<uint8_t>(~length & 0xFF));
        out.push_back(static_cast<uint8_t>((~length >> 8) & 0xFF));
        out.insert(out.end(), raw.begin() + static_cast<long>(offset),
                   raw.begin() + static_cast<long>(offset + length));
        offset += length;
    } while (offset < raw.size());
    PutBigEndian(out, Adler32(raw));
    return out;
}

}  // namespace

bool WritePng(const std::wstring& path, uint32_t width, uint32_t height, const std::vector<uint8_t>& rgb) {
    if (width == 0 || height == 0 || rgb.size() != static_cast<size_t>(width) * height * 3) return false;
    std::vector<uint8_t> raw;
    raw.reserve((static_cast<size_t>(width) * 3 + 1) * height);
    for (uint32_t y = 0; y < height; ++y) {
        raw.push_back(0);  // no filter
        const auto row = rgb.begin() + static_cast<long>(static_cast<size_t>(y) * width * 3);
        raw.insert(raw.end(), row, row + static_cast<long>(width) * 3);
    }

    std::vector<uint8_t> file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<uint8_t> header;
    PutBigEndian(header, width);
    PutBigEndian(header, height);
    header.insert(header.end(), {8, 2, 0, 0, 0});  // 8 bits, truecolour, deflate, no filter, no interlace
    PutChunk(file, "IHDR", header);
    PutChunk(file, "IDAT", StoredZlib(raw));
    PutChunk(file, "IEND", {});

    FILE* out = _wfopen(path.c_str(), L"wb");
    if (out == nullptr) return false;
    const bool written = std::fwrite(file.data(), 1, file.size(), out) == file.size();
    return std::fclose(out) == 0 && written;
}

}  // namespace drvhost
