// The forms of values: notation, JSON type, unit and named values.
#pragma once

#include "message_fields.h"

namespace message_fields::forms {

template <std::size_t count>
constexpr List<NamedValue> listOf(const NamedValue (&names)[count]) {
    return {names, count};
}

constexpr std::int64_t kNone16 = 0xFFFF;

constexpr NamedValue kComponentTypes[] = {{0, "video"}, {1, "audio"}, {2, "subtitle"}};
/// OIPF DAE, clause 7.13.11.
constexpr NamedValue kIdTypes[] = {{0, "ID_ANALOG"},         {10, "ID_DVB_C"},   {11, "ID_DVB_S"},  {12, "ID_DVB_T"},
                                   {13, "ID_DVB_SI_DIRECT"}, {14, "ID_DVB_C2"},  {15, "ID_DVB_S2"}, {16, "ID_DVB_T2"},
                                   {20, "ID_ISDB_C"},        {21, "ID_ISDB_S"},  {22, "ID_ISDB_T"}, {30, "ID_ATSC_T"},
                                   {40, "ID_IPTV_SDS"},      {41, "ID_IPTV_URI"}};
constexpr NamedValue kAspectRatios[] = {{0, "unknown"}, {2, "4:3"}, {3, "16:9"}, {4, "wider than 16:9"}};
constexpr NamedValue kUpdates[] = {{0, "first"}, {1, "changed"}};
constexpr NamedValue kAitStates[] = {{0, "not signalled"}, {1, "signalled"}};
constexpr NamedValue kOsdStates[] = {{0, "hidden"}, {1, "shown"}};
constexpr NamedValue kModuleStatuses[] = {{0, "removed"}, {1, "inserted"}};
/// TS 102 809, clause 5.2.4.
constexpr NamedValue kControlCodes[] = {{1, "AUTOSTART"}, {2, "PRESENT"}, {3, "DESTROY"},  {4, "KILL"},
                                        {5, "PREFETCH"},  {6, "REMOTE"},  {7, "DISABLED"}, {8, "PLAYBACK_AUTOSTART"}};
constexpr NamedValue kApplicationStatuses[] = {{0, "started"}, {1, "failed"}};
/// OIPF DAE, clause 7.6.1.2.
constexpr NamedValue kDrmResults[] = {
    {0, "successful"},        {1, "unknown error"},       {2, "cannot process request"},
    {3, "unknown MIME type"}, {4, "user consent needed"}, {5, "unknown DRM system"},
    {6, "wrong format"}};
/// ISO/IEC 13818-1, Annex U.
constexpr NamedValue kTimelineFlags[] = {{1, "paused"}, {2, "discontinuity"}, {4, "force_reload"}};
constexpr NamedValue kComponentTags[] = {{-1, "any"}, {kNone16, "none"}};
constexpr NamedValue kComponentIndexes[] = {{0xFFFFFFFF, "none"}};
constexpr NamedValue kSlots[] = {{kNone16, "none"}};

constexpr Form number = {"number", Notation::decimal, JsonType::number};
constexpr Form networkNumber = {"network number", Notation::decimal, JsonType::number};
constexpr Form pid = {"PID", Notation::decimal, JsonType::number};
constexpr Form hexadecimal8 = {"hexadecimal number", Notation::hexadecimal, JsonType::number, 2};
constexpr Form hexadecimal16 = {"hexadecimal number", Notation::hexadecimal, JsonType::number, 4};
constexpr Form bothNotations = {"number in both notations", Notation::both, JsonType::number};
constexpr Form ticks90kHz = {"time stamp", Notation::decimal, JsonType::number, 0, "90 kHz"};
constexpr Form mediaTicks = {"time stamp", Notation::decimal, JsonType::number, 0, "ticks of timescale"};
constexpr Form ticksPerSecond = {"rate", Notation::decimal, JsonType::number, 0, "ticks a second"};
constexpr Form milliseconds = {"duration", Notation::decimal, JsonType::number, 0, "ms"};
constexpr Form byteCount = {"length", Notation::decimal, JsonType::number, 0, "bytes"};
constexpr Form componentTag = {"component_tag", Notation::hexadecimal, JsonType::number, 2, "", listOf(kComponentTags)};
constexpr Form componentIndex = {"index", Notation::decimal, JsonType::number, 0, "", listOf(kComponentIndexes)};
constexpr Form slot = {"slot", Notation::decimal, JsonType::number, 0, "", listOf(kSlots)};

template <std::size_t count>
constexpr Form enumeration(const NamedValue (&names)[count]) {
    return {"enumeration", Notation::decimal, JsonType::text, 0, "", listOf(names)};
}

constexpr Form componentType = enumeration(kComponentTypes);
constexpr Form idType = enumeration(kIdTypes);
constexpr Form aspectRatio = enumeration(kAspectRatios);
constexpr Form update = enumeration(kUpdates);
constexpr Form aitState = enumeration(kAitStates);
constexpr Form osdState = enumeration(kOsdStates);
constexpr Form moduleStatus = enumeration(kModuleStatuses);
constexpr Form controlCode = enumeration(kControlCodes);
constexpr Form drmResult = enumeration(kDrmResults);
constexpr Form applicationStatus = enumeration(kApplicationStatuses);

constexpr Form flag = {"yes or no", Notation::flag, JsonType::boolean};
constexpr Form timelineFlags = {"flags", Notation::flags, JsonType::listOfTexts, 0, "", listOf(kTimelineFlags)};
constexpr Form language = {"language", Notation::language, JsonType::text};
constexpr Form text = {"text", Notation::text, JsonType::text};
constexpr Form bytes = {"bytes", Notation::bytes, JsonType::text};
constexpr Form section = {"section", Notation::section, JsonType::text};
constexpr Form triplet = {"ONID:TSID:SID", Notation::triplet, JsonType::text};
constexpr Form record = {"record", Notation::record, JsonType::none};

}  // namespace message_fields::forms
