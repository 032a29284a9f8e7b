#include "log.h"

#include "client/owned.h"

#include <cstdio>

namespace simulator {
namespace {

constexpr std::size_t longest_text = 200;
constexpr std::size_t largest_value = 4096; ///< that is worth printing

std::string escaped(unsigned char character)
{
    constexpr char digits[] = "0123456789abcdef";
    return {'\\', 'x', digits[character >> 4], digits[character & 0xf]};
}

} // namespace

void Log::line(const std::string &text) const
{
    if (!is_quiet_)
        std::fputs((text + "\n").c_str(), stderr);
    if (copy_)
        copy_(text);
}

std::string shown(std::string_view text)
{
    constexpr unsigned char first_printable = ' ';
    constexpr unsigned char delete_character = 0x7f;
    std::string result;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        const bool begins_character = (code & 0xc0) != 0x80;
        if (begins_character && result.size() >= longest_text)
            return result + "…";
        result += code < first_printable || code == delete_character ? escaped(code) : std::string(1, character);
    }
    return result;
}

std::string shown(GVariant *value)
{
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING))
        return shown(std::string_view(g_variant_get_string(value, nullptr)));
    if (g_variant_get_size(value) > largest_value)
        return std::string("(") + g_variant_get_type_string(value) + " …)";
    const pvr::OwnedText text(g_variant_print(value, FALSE));
    return shown(std::string_view(text.get()));
}

std::string shown_call(const GDBusMethodInfo &method, GVariant *arguments)
{
    std::string text = std::string(method.name) + "(";
    for (std::size_t i = 0; i < g_variant_n_children(arguments); ++i) {
        const pvr::OwnedVariant value(g_variant_get_child_value(arguments, i));
        text += (i == 0 ? "" : ", ") + std::string(method.in_args[i]->name) + " " + shown(value.get());
    }
    return text + ")";
}

} // namespace simulator
