#!/bin/bash
# Compares the names that the library exports with the expected names, in both directions.
#   check_exports.sh NM LIBRARY EXPECTED_MESSAGES
set -euo pipefail
nm=$1 library=$2 messages=$3

exported() {
    "$nm" -D --defined-only --demangle "$library" | sed -E 's/^[0-9a-f]+ [A-Za-z] //'
}

expected() {
    printf '%s\n' DTVAPI_QueryInterface CreateBrowserDvbServiceProxy frameCreateApplicationArray
    local class
    for class in BrowserDvbAPI SectionFilterAPI DvbAITSectionAPI BrowserAITCatcher; do
        class=velmora::dvbservice::$class
        echo "velmora::base::Singleton<$class, velmora::base::DefaultSingletonTraits<$class>, $class>::instance_"
    done
    local catcher=velmora::dvbservice::BrowserAITCatcher
    echo "$catcher::getInstance()"
    echo "$catcher::updateCurrentChannelInfo(unsigned short, unsigned short, unsigned short, unsigned short)"
    echo "$catcher::updateAIT(std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >)"
    sed -nE 's/^EXPECTED_(COMMAND|EVENT)\(\w+, (\w+),.*/__ovx_EndianTable_browserdvbserviceMsg\2_t/p' "$messages"
    sed -nE 's/^EXPECTED_NESTED\((\w+),.*/__ovx_EndianTable_serializable_\1/p' "$messages"
}

if ! difference=$(diff <(expected | sort) <(exported | sort)); then
    echo "exported names differ (< missing, > not to be visible):"
    echo "$difference"
    exit 1
fi
echo "$(exported | wc -l) names exported, as expected"
