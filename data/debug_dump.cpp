// The mesh as text for a finite-element pre-processor. Free-field bulk data: fields of fixed width between literals.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "data/vq_data_mod.h"

namespace VQ_DATA_MOD {

namespace {

constexpr char BULKFILE[] = "c:\\temp\\vq.nas";
constexpr char MATERIALFILE[] = "c:\\temp\\mat.dat";

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::string right_justified(const std::string& text, std::size_t width) {
    return text.size() > width ? std::string(width, '*') : std::string(width - text.size(), ' ') + text;
}

// Iw: an integer right-justified in `width` characters; asterisks when it does not fit.
std::string integer_field(std::int32_t i, std::size_t width) { return right_justified(std::to_string(i), width); }

// E14.8: 0.12345678E+03. A negative number gives up the zero before the point, an exponent of three digits its letter.
std::string real_field(double x) {
    constexpr std::size_t width = 14;
    if (std::isnan(x)) return right_justified("NaN", width);
    if (std::isinf(x)) return right_justified(x < 0.0 ? "-Infinity" : "Infinity", width);

    char scientific[32];  // d.dddddddE+xx, eight significant digits
    std::snprintf(scientific, sizeof scientific, "%.7E", std::fabs(x));
    const int exponent = x == 0.0 ? 0 : std::atoi(scientific + 10) + 1;
    char tail[8];
    std::snprintf(tail, sizeof tail, std::abs(exponent) < 100 ? "E%+03d" : "%+04d", exponent);
    const std::string digits = std::string(1, scientific[0]) + std::string(scientific + 2, 7);
    return (std::signbit(x) ? "-." : "0.") + digits + tail;
}

}  // namespace

void WRITEMESHFORDEBUG(const VARIABLES_T& VARS) {
    const File bulk(std::fopen(BULKFILE, "w"));
    if (!bulk) return;
    const File material(std::fopen(MATERIALFILE, "w"));
    if (!material) return;
    const auto write = [](const File& file, const std::string& line) {
        std::fprintf(file.get(), "%s\n", line.c_str());
    };

    write(bulk, "begin bulk");
    for (std::int32_t i = 1; i <= VARS.NNODES; ++i)
        write(bulk, "GRID," + integer_field(i, 10) + ", ," + real_field(VARS.XY(i, 1)) + " , " +
                        real_field(VARS.XY(i, 2)) + " , 0.");
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e) {
        const bool triangle = is_triangle(VARS, e);
        std::string line = (triangle ? "CTRIA3," : "CQUAD4,") + integer_field(e, 8) + ",1 ,";
        for (int i = 1; i <= (triangle ? 3 : 4); ++i)
            line += (i > 1 ? " , " : "") + integer_field(VARS.ELEMNODES(e, i), 8);
        write(bulk, line);
    }
    for (std::int32_t e = 1; e <= VARS.NELEMS; ++e)
        write(material, real_field(VARS.ELEMPROP(e, 1)) + "   " + real_field(VARS.ELEMPROP(e, 2)) + "  " +
                            real_field(VARS.ELEMPROP(e, 3)));
    write(bulk, "end data");
}

}  // namespace VQ_DATA_MOD
