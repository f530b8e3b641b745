// What a program needs of {fmt} at run time, compiled once for the target, which has no library package of it.
#include <fmt/format-inl.h>

FMT_BEGIN_NAMESPACE
namespace detail {

template FMT_API dragonbox::decimal_fp<float> dragonbox::to_decimal(float number) noexcept;
template FMT_API dragonbox::decimal_fp<double> dragonbox::to_decimal(double number) noexcept;
template FMT_API locale_ref::locale_ref(const std::locale &locale);
template FMT_API std::locale locale_ref::get<std::locale>() const;
template FMT_API thousands_sep_result<char> thousands_sep_impl(locale_ref locale);
template FMT_API char decimal_point_impl(locale_ref locale);
template FMT_API void buffer<char>::append(const char *begin, const char *end);
template FMT_API void vformat_to(buffer<char> &out, string_view format,
                                 basic_format_args<FMT_BUFFER_CONTEXT(char)> args, locale_ref locale);

}  // namespace detail
FMT_END_NAMESPACE
