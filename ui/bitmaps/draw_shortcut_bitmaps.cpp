// Draws the pictures of the printing shortcuts: 48x48 pixels, 24 bits per pixel, written as BMP
// files into the current directory (147.bmp ... 160.bmp) and compiled into the plug-in's module.
// A build tool, run once per build: every picture is made of a few shapes, rendered with 4x4
// samples per pixel so that edges are smooth, and comes out the same on every run.
//
//   147 everyday document        148 borderless photo        149 photo with a white border
//   151 two-sided printing       152 fast, economical        153 factory defaults
//   154 modified shortcut        155, 157, 158, 159, 160: 148, 149, 151, 152, 153 modified
// A modified picture is its shortcut's picture with a pencil in the lower right corner.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr int kSize = 48;
constexpr int kSamples = 4;  // per axis
constexpr double kPi = 3.14159265358979323846;

struct Color {
    double r, g, b;
};
Color Mix(Color a, Color b, double t) { return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t}; }

constexpr Color kBackground{255, 255, 255};
constexpr Color kPaper{255, 255, 255};
constexpr Color kPaperEdge{120, 128, 140};
constexpr Color kFold{214, 220, 228};
constexpr Color kText{96, 104, 116};
constexpr Color kHeading{38, 110, 196};
constexpr Color kSkyTop{74, 144, 226};
constexpr Color kSkyBottom{176, 214, 245};
constexpr Color kSun{255, 200, 40};
constexpr Color kHillFar{92, 170, 74};
constexpr Color kHillNear{48, 128, 56};
constexpr Color kArrow{230, 120, 20};
constexpr Color kBolt{255, 196, 0};
constexpr Color kBoltEdge{176, 112, 0};
constexpr Color kGear{90, 98, 112};
constexpr Color kPencilBody{250, 178, 40};
constexpr Color kPencilEdge{150, 90, 10};
constexpr Color kPencilWood{240, 214, 168};
constexpr Color kPencilLead{50, 50, 50};
constexpr Color kEraser{232, 120, 140};
constexpr Color kFerrule{170, 176, 186};

using Inside = std::function<bool(double x, double y)>;
using Paint = std::function<Color(double x, double y)>;

struct Shape {
    Inside inside;
    Paint paint;
};

class Picture {
public:
    void Add(Inside inside, Color color) {
        m_shapes.push_back({std::move(inside), [color](double, double) { return color; }});
    }
    void Add(Inside inside, Paint paint) { m_shapes.push_back({std::move(inside), std::move(paint)}); }
    void Add(const Picture& other) { m_shapes.insert(m_shapes.end(), other.m_shapes.begin(), other.m_shapes.end()); }

    // The colour at a point: the last shape that covers it, painted over the earlier ones.
    Color At(double x, double y) const {
        for (auto shape = m_shapes.rbegin(); shape != m_shapes.rend(); ++shape) {
            if (shape->inside(x, y)) return shape->paint(x, y);
        }
        return kBackground;
    }

private:
    std::vector<Shape> m_shapes;
};

// Shapes, in the picture's coordinates: (0, 0) is the top left corner, 48 the far edges.
Inside Rect(double left, double top, double right, double bottom) {
    return [=](double x, double y) { return x >= left && x < right && y >= top && y < bottom; };
}

Inside Circle(double cx, double cy, double radius) {
    return [=](double x, double y) { return (x - cx) * (x - cx) + (y - cy) * (y - cy) < radius * radius; };
}

// A polygon by the even-odd rule.
Inside Polygon(std::vector<std::pair<double, double>> points) {
    return [points = std::move(points)](double x, double y) {
        bool inside = false;
        for (size_t i = 0, j = points.size() - 1; i < points.size(); j = i++) {
            const auto [xi, yi] = points[i];
            const auto [xj, yj] = points[j];
            if ((yi > y) != (yj > y) && x < (xj - xi) * (y - yi) / (yj - yi) + xi) inside = !inside;
        }
        return inside;
    };
}

// Part of a ring: radii from `inner` to `outer`, angles from `from` to `to` (degrees, clockwise
// from three o'clock, as the y axis points down).
Inside Arc(double cx, double cy, double inner, double outer, double from, double to) {
    return [=](double x, double y) {
        const double dx = x - cx, dy = y - cy, distance = std::sqrt(dx * dx + dy * dy);
        if (distance < inner || distance >= outer) return false;
        double angle = std::atan2(dy, dx) * 180 / kPi;
        if (angle < from) angle += 360;
        return angle >= from && angle <= to;
    };
}

Inside Union(Inside a, Inside b) {
    return [=](double x, double y) { return a(x, y) || b(x, y); };
}

Inside Without(Inside a, Inside b) {
    return [=](double x, double y) { return a(x, y) && !b(x, y); };
}

// A sheet of paper with a folded top right corner; `edge` wide outline.
void AddSheet(Picture& picture, double left, double top, double right, double bottom) {
    const double fold = 7, edge = 1.2;
    const auto outline =
        Polygon({{left, top}, {right - fold, top}, {right, top + fold}, {right, bottom}, {left, bottom}});
    const auto paper = Polygon({{left + edge, top + edge},
                                {right - fold - edge * 0.4, top + edge},
                                {right - edge, top + fold + edge * 0.4},
                                {right - edge, bottom - edge},
                                {left + edge, bottom - edge}});
    picture.Add(outline, kPaperEdge);
    picture.Add(paper, kPaper);
    picture.Add(Polygon({{right - fold, top}, {right - fold, top + fold}, {right, top + fold}}), kPaperEdge);
    picture.Add(Polygon({{right - fold + edge, top + edge * 2},
                         {right - fold + edge, top + fold - edge},
                         {right - edge * 2, top + fold - edge}}),
                kFold);
}

// Lines of text on a sheet, the first one a heading.
void AddTextLines(Picture& picture, double left, double top, double right, int lines, double spacing = 4.5) {
    picture.Add(Rect(left, top, left + (right - left) * 0.55, top + 2.2), kHeading);
    for (int line = 1; line < lines; ++line) {
        const double y = top + line * spacing;
        const double end = line == lines - 1 ? left + (right - left) * 0.6 : right;
        picture.Add(Rect(left, y, end, y + 1.6), kText);
    }
}

// A landscape: sky, sun and two hills, clipped to the rectangle.
void AddPhoto(Picture& picture, double left, double top, double right, double bottom) {
    const auto frame = Rect(left, top, right, bottom);
    const double height = bottom - top, width = right - left;
    picture.Add(frame, [=](double, double y) { return Mix(kSkyTop, kSkyBottom, (y - top) / height); });
    picture.Add(
        [=](double x, double y) {
            return frame(x, y) && Circle(left + width * 0.72, top + height * 0.28, height * 0.13)(x, y);
        },
        kSun);
    picture.Add(
        [=](double x, double y) {
            return frame(x, y) && Circle(left + width * 0.25, bottom + height * 0.35, height * 0.75)(x, y);
        },
        kHillFar);
    picture.Add(
        [=](double x, double y) {
            return frame(x, y) && Circle(left + width * 0.85, bottom + height * 0.55, height * 0.8)(x, y);
        },
        kHillNear);
}

Picture EverydayDocument() {
    Picture picture;
    AddSheet(picture, 9, 4, 39, 44);
    AddTextLines(picture, 13, 11, 33, 7);
    return picture;
}

Picture BorderlessPhoto() {
    Picture picture;
    AddSheet(picture, 9, 4, 39, 44);
    // The photo covers the whole sheet, up to its outline.
    const auto sheet = Polygon({{10.2, 5.2}, {31.5, 5.2}, {37.8, 11.5}, {37.8, 42.8}, {10.2, 42.8}});
    Picture photo;
    AddPhoto(photo, 10.2, 5.2, 37.8, 42.8);
    picture.Add([=](double x, double y) { return sheet(x, y); },
                [photo](double x, double y) { return photo.At(x, y); });
    return picture;
}

Picture PhotoWithBorder() {
    Picture picture;
    AddSheet(picture, 9, 4, 39, 44);
    AddPhoto(picture, 14, 14, 34, 34);
    return picture;
}

Picture TwoSided() {
    Picture picture;
    AddSheet(picture, 17, 3, 43, 37);  // the back of the sheet
    picture.Add(Rect(21, 18, 38, 19.6), kFold);
    picture.Add(Rect(21, 22.5, 38, 24.1), kFold);
    AddSheet(picture, 5, 11, 31, 45);  // the front
    AddTextLines(picture, 9, 18, 26, 6, 4.2);
    // A turning arrow from the front to the back.
    picture.Add(Arc(30, 14, 7.5, 10.5, 180, 300), kArrow);
    picture.Add(Polygon({{33.2, 2.0}, {40.0, 6.8}, {32.0, 10.4}}), kArrow);
    return picture;
}

Picture FastEconomical() {
    Picture picture;
    AddSheet(picture, 9, 4, 39, 44);
    AddTextLines(picture, 13, 11, 33, 4, 5.5);
    // A lightning bolt over the lower half.
    const std::vector<std::pair<double, double>> bolt = {{27, 20}, {18, 33},   {24, 33}, {20, 46},
                                                         {33, 29}, {26.5, 29}, {31, 20}};
    picture.Add(Polygon(bolt), kBoltEdge);
    std::vector<std::pair<double, double>> inner;
    for (const auto& [x, y] : bolt) inner.push_back({25.6 + (x - 25.6) * 0.8, 31 + (y - 31) * 0.8});
    picture.Add(Polygon(inner), kBolt);
    return picture;
}

Picture FactoryDefaults() {
    Picture picture;
    AddSheet(picture, 9, 4, 39, 44);
    AddTextLines(picture, 13, 11, 33, 3);
    // A gear of eight teeth with a hole.
    const double cx = 24, cy = 30, body = 7.5, tip = 10.5, hole = 3;
    const Inside teeth = [=](double x, double y) {
        const double dx = x - cx, dy = y - cy, distance = std::sqrt(dx * dx + dy * dy);
        if (distance >= tip) return false;
        double angle = std::atan2(dy, dx) * 180 / kPi + 360;
        angle = std::fmod(angle, 45.0);
        return angle > 12 && angle < 33;
    };
    picture.Add(Without(Union(Circle(cx, cy, body), teeth), Circle(cx, cy, hole)), kGear);
    return picture;
}

// The mark of a modified shortcut: a pencil writing towards the lower left corner.
Picture WithPencil(const Picture& base) {
    Picture picture = base;
    // Along the pencil: from the tip at (27, 46) up and to the right, at 45 degrees.
    const double ux = std::sqrt(0.5), uy = -std::sqrt(0.5);  // along
    const double vx = std::sqrt(0.5), vy = std::sqrt(0.5);   // across
    const double tipX = 27, tipY = 46, half = 3.6;
    auto at = [&](double along, double across) {
        return std::pair<double, double>{tipX + ux * along + vx * across, tipY + uy * along + vy * across};
    };
    auto band = [&](double from, double to, double width) {
        return Polygon({at(from, -width), at(to, -width), at(to, width), at(from, width)});
    };
    picture.Add(band(6.5, 28.5, half + 1.1), kPencilEdge);
    picture.Add(Polygon({at(0, 0), at(7.5, -half - 1.1), at(7.5, half + 1.1)}), kPencilEdge);
    picture.Add(Polygon({at(1.2, 0), at(7.2, -half), at(7.2, half)}), kPencilWood);
    picture.Add(Polygon({at(0.6, 0), at(2.9, -1.3), at(2.9, 1.3)}), kPencilLead);
    picture.Add(band(7.2, 22, half), kPencilBody);
    picture.Add(band(7.2, 22, 1.0), Mix(kPencilBody, kPencilEdge, 0.25));
    picture.Add(band(22, 24.5, half), kFerrule);
    picture.Add(band(24.5, 27.6, half), kEraser);
    return picture;
}

bool WriteBitmap(const std::string& path, const Picture& picture) {
    constexpr int rowBytes = kSize * 3;  // already a multiple of four
    constexpr uint32_t pixelBytes = rowBytes * kSize, headerBytes = 14 + 40;
    std::vector<uint8_t> file;
    auto put16 = [&](uint16_t value) { file.insert(file.end(), {uint8_t(value), uint8_t(value >> 8)}); };
    auto put32 = [&](uint32_t value) {
        file.insert(file.end(), {uint8_t(value), uint8_t(value >> 8), uint8_t(value >> 16), uint8_t(value >> 24)});
    };
    put16(0x4D42), put32(headerBytes + pixelBytes), put32(0), put32(headerBytes);
    put32(40), put32(kSize), put32(kSize), put16(1), put16(24), put32(0), put32(pixelBytes);
    put32(2835), put32(2835), put32(0), put32(0);
    for (int row = kSize - 1; row >= 0; --row) {  // bottom row first
        for (int column = 0; column < kSize; ++column) {
            Color sum{0, 0, 0};
            for (int sy = 0; sy < kSamples; ++sy) {
                for (int sx = 0; sx < kSamples; ++sx) {
                    const Color c = picture.At(column + (sx + 0.5) / kSamples, row + (sy + 0.5) / kSamples);
                    sum = {sum.r + c.r, sum.g + c.g, sum.b + c.b};
                }
            }
            constexpr double count = kSamples * kSamples;
            auto channel = [](double value) {
                return uint8_t(std::lround(value < 0 ? 0 : (value > 255 ? 255 : value)));
            };
            file.insert(file.end(), {channel(sum.b / count), channel(sum.g / count), channel(sum.r / count)});
        }
    }
    FILE* out = std::fopen(path.c_str(), "wb");
    if (out == nullptr) return false;
    const bool written = std::fwrite(file.data(), 1, file.size(), out) == file.size();
    return std::fclose(out) == 0 && written;
}

}  // namespace

int main() {
    const Picture everyday = EverydayDocument(), borderless = BorderlessPhoto(), bordered = PhotoWithBorder(),
                  twoSided = TwoSided(), fast = FastEconomical(), defaults = FactoryDefaults();
    const std::pair<int, Picture> pictures[] = {
        {147, everyday},
        {148, borderless},
        {149, bordered},
        {151, twoSided},
        {152, fast},
        {153, defaults},
        {154, WithPencil(everyday)},
        {155, WithPencil(borderless)},
        {157, WithPencil(bordered)},
        {158, WithPencil(twoSided)},
        {159, WithPencil(fast)},
        {160, WithPencil(defaults)},
    };
    for (const auto& [id, picture] : pictures) {
        const std::string path = std::to_string(id) + ".bmp";
        if (!WriteBitmap(path, picture)) {
            std::fprintf(stderr, "cannot write %s\n", path.c_str());
            return 1;
        }
    }
    return 0;
}
