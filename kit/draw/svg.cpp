#include "kit/draw/svg.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "kit/section/words.h"

namespace velquor {

namespace {

std::string hex(const Colour& c) {
    static const char* const digits = "0123456789abcdef";
    std::string text = "#";
    for (const double part : {c.r, c.g, c.b}) {
        const int k = static_cast<int>(std::lround(255 * std::clamp(part, 0.0, 1.0)));
        text += digits[k / 16];
        text += digits[k % 16];
    }
    return text;
}

// To a tenth, or to a hundredth.
std::string number(double x, double digits = 100) { return text_of(std::round(digits * x) / digits + 0.0); }
std::string pair(double x, double y) { return number(x) + " " + number(y); }

std::string element_of(const Word& word, const Theme& theme) {
    const Style& s = word.style;
    const std::string x = number(word.at.x, 10), y = number(word.at.y, 10);
    std::string text =
        "<text x=\"" + x + "\" y=\"" + y + "\" font-size=\"" + text_of(s.size) + "\" fill=\"" + hex(s.colour) + "\"";
    if (s.bold) text += " font-weight=\"bold\"";
    if (s.anchor != Anchor::start)
        text += std::string(" text-anchor=\"") + (s.anchor == Anchor::end ? "end" : "middle") + "\"";
    if (s.upward) text += " transform=\"rotate(-90 " + x + " " + y + ")\"";
    if (s.halo)
        text += " paint-order=\"stroke\" stroke=\"" + hex(theme.paper) +
                "\" stroke-opacity=\"0.85\" stroke-width=\"3\" stroke-linejoin=\"round\"";
    return text + ">" + in_markup(word.text) + "</text>\n";
}

std::string polygon(const SheetPoint* at, std::size_t count) {
    std::string text = "M";
    for (std::size_t k = 0; k < count; ++k) text += (k == 0 ? "" : " ") + pair(at[k].x, at[k].y);
    return "d=\"" + text + "z\"/>\n";
}

// A number of cairo's, which no locale changes.
double number_in(const std::string& text, std::size_t from, std::size_t to) {
    double value = 0;
    std::from_chars(text.data() + from, text.data() + to, value);
    return value;
}

// Text of cairo's with two decimals, colours as six digits.
std::string shortened(const std::string& svg) {
    std::string out;
    out.reserve(svg.size());
    for (std::size_t k = 0; k < svg.size();) {
        if (svg.compare(k, 4, "rgb(") == 0) {
            double part[3] = {};
            std::size_t at = k + 4;
            for (double& p : part) {
                const std::size_t stop = svg.find_first_of("%,)", at);
                p = number_in(svg, at, stop) / 100;
                at = svg.find_first_not_of("%,", stop);
            }
            out += hex({part[0], part[1], part[2]});
            k = svg.find(')', k) + 1;
        } else if (svg[k] == '.' && k > 0 && svg[k - 1] >= '0' && svg[k - 1] <= '9') {
            const std::size_t end = std::min(svg.find_first_not_of("0123456789", k + 1), svg.size());
            std::string digits = svg.substr(k, std::min<std::size_t>(end - k, 3));
            digits.erase(digits.find_last_not_of('0') + 1);
            if (digits != ".") out += digits;
            k = end;
        } else {
            out += svg[k++];
        }
    }
    return out;
}

// Names that are those of this picture alone, so that several can stand in one page.
std::string named(const std::string& svg) {
    std::uint64_t sum = 14695981039346656037u;  // FNV-1a
    for (const char c : svg) sum = (sum ^ static_cast<unsigned char>(c)) * 1099511628211u;
    std::string mine = "v";
    for (int k = 0; k < 5; ++k, sum /= 36) mine += "0123456789abcdefghijklmnopqrstuvwxyz"[sum % 36];
    std::string out;
    out.reserve(svg.size());
    for (std::size_t k = 0; k < svg.size();) {
        std::size_t length = 0;
        for (const char* name : {" id=\"", "url(#", "href=\"#"})
            if (svg.compare(k, std::char_traits<char>::length(name), name) == 0)
                length = std::char_traits<char>::length(name);
        if (length == 0) {
            out += svg[k++];
        } else {
            out += svg.substr(k, length) + mine;
            k += length;
        }
    }
    return out;
}

}  // namespace

void begin_cells(SvgParts& parts, cairo_t* cairo, const Scale& scale) {
    const std::unique_ptr<cairo_path_t, void (*)(cairo_path_t*)> path(cairo_copy_path(cairo), cairo_path_destroy);
    check_status(path->status);
    cairo_new_path(cairo);
    std::string text;
    for (int k = 0; k < path->num_data; k += path->data[k].header.length) {
        const cairo_path_data_t* d = &path->data[k];
        if (d->header.type == CAIRO_PATH_CLOSE_PATH) text += "z";
        if (d->header.type == CAIRO_PATH_MOVE_TO) text += "M" + pair(d[1].point.x, d[1].point.y);
        if (d->header.type == CAIRO_PATH_LINE_TO) text += "L" + pair(d[1].point.x, d[1].point.y);
        if (d->header.type == CAIRO_PATH_CURVE_TO)
            text += "C" + pair(d[1].point.x, d[1].point.y) + " " + pair(d[2].point.x, d[2].point.y) + " " +
                    pair(d[3].point.x, d[3].point.y);
    }
    const std::string clip = "c" + std::to_string(++parts.clips), map = "m" + std::to_string(++parts.maps);
    parts.gradients.clear();
    parts.definitions += "<clipPath id=\"" + clip + "\"><path d=\"" + text + "\"/></clipPath>\n<linearGradient id=\"" +
                         map + "\" gradientUnits=\"userSpaceOnUse\">";
    for (const Stop& stop : map_of(scale))
        parts.definitions += "<stop offset=\"" + text_of(stop.share) + "\" stop-color=\"" + hex(stop.colour) + "\"/>";
    parts.definitions += "</linearGradient>\n";
    parts.cells += "<g class=\"cells\" clip-path=\"url(#" + clip + ")\">\n";
}

void end_cells(SvgParts& parts) { parts.cells += "</g>\n"; }

void add_cell(SvgParts& parts, const SheetPoint* at, std::size_t count, const Colour& colour) {
    parts.cells += "<path fill=\"" + hex(colour) + "\" " + polygon(at, count);
}

void add_cell(SvgParts& parts, const SheetPoint* at, std::size_t count, const SheetPoint& a, const SheetPoint& b) {
    // Along the line that passes nearest to the origin: of a field that is linear all over it is the same for all
    // cells.
    const double x = b.x - a.x, y = b.y - a.y, off = (a.x * y - a.y * x) / (x * x + y * y);
    const std::string vector = "x1=\"" + number(a.x - off * y) + "\" y1=\"" + number(a.y + off * x) + "\" x2=\"" +
                               number(b.x - off * y) + "\" y2=\"" + number(b.y + off * x) + "\"";
    const std::string map = std::to_string(parts.maps);
    const auto [known, fresh] = parts.gradients.emplace(vector, static_cast<int>(parts.gradients.size()));
    const std::string name = "g" + map + "_" + std::to_string(known->second);
    if (fresh)
        parts.definitions += "<linearGradient id=\"" + name + "\" xlink:href=\"#m" + map + "\" " + vector + "/>\n";
    parts.cells += "<path fill=\"url(#" + name + ")\" " + polygon(at, count);
}

std::string whole_svg(const std::string& drawn, const SvgParts& parts, const SvgHead& head, const Theme& theme) {
    const std::string start =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
        "xmlns:xlink=\"http://www.w3.org/1999/xlink\" role=\"img\" width=\"" +
        text_of(head.width) + "\" height=\"" + text_of(head.height) + "\" viewBox=\"0 0 " + text_of(head.box_width) +
        " " + text_of(head.box_height) + "\">\n<title>" + in_markup(printable(head.title)) + "</title>\n<desc>" +
        in_markup(printable(head.about)) + "</desc>\n";
    const std::size_t first = drawn.find('>', drawn.find("<svg")) + 1, last = drawn.rfind("</svg>");
    std::string body = shortened(drawn.substr(first, last - first));
    // cairo counts the surfaces of a process.
    for (std::size_t at; (at = body.find(" id=\"surface")) != std::string::npos;)
        body.erase(at, body.find('"', at + 5) + 1 - at);
    std::string svg;
    if (!parts.definitions.empty()) svg += "<defs>\n" + parts.definitions + "</defs>\n";
    svg += "<rect width=\"" + text_of(head.box_width) + "\" height=\"" + text_of(head.box_height) + "\" fill=\"" +
           hex(theme.paper) + "\"/>\n" + parts.cells + body;
    svg = start + named(svg) + "<g font-family=\"sans-serif\">\n";
    for (const Word& word : parts.words) svg += element_of(word, theme);
    return svg + "</g>\n</svg>\n";
}

}  // namespace velquor
