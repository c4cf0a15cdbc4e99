#!/usr/bin/env bash
# What the shared library exports, as names. Inline functions and the standard library's own symbols are left out:
# whether a compiler emits them depends on how it optimises.
#   exported_symbols.sh list LIBRARY            prints them
#   exported_symbols.sh compare LIBRARY LIST    fails when they are not those of the list
set -euo pipefail
export LC_ALL=C

list() {
  nm --dynamic --defined-only --demangle "$1" | sed -n -E 's/^[0-9a-f]+ [TDBRV] (.*)$/\1/p' |
    grep -E '^((non-virtual thunk to|virtual thunk to|vtable for|typeinfo for) )?Zelto::' |
    sed -E 's/std::__cxx11::basic_string<wchar_t, [^<>]*<wchar_t>, [^<>]*<wchar_t> >/std::wstring/g
            s/std::__cxx11::basic_string<char, [^<>]*<char>, [^<>]*<char> >/std::string/g
            s/std::basic_string_view<wchar_t, [^<>]*<wchar_t> >/std::wstring_view/g
            s/std::basic_string_view<char, [^<>]*<char> >/std::string_view/g' |
    sort -u
}

case "$1" in
  list) list "$2" ;;
  compare)
    if ! difference=$(diff --unified=0 "$3" <(list "$2") | sed '1,2d;/^@@/d') || [ -n "$difference" ]; then
      printf '%s\n' "The library exports other symbols than $3 says (+ new, - gone):" "$difference" \
        "A symbol that is gone breaks programs that were linked before." \
        "When the change is meant, take the new list over: ./run symbols"
      exit 1
    fi
    ;;
esac
