// Values of fields in JSON, for any type of JSON object that has an operator[] for names.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include "message_fields.h"

namespace message_fields {

/// Adds the value under the field's name, in the type that its form has in JSON.
template <typename Json>
void addTo(Json& object, const FieldValue& value) {
    const Form& form = *value.field->form;
    const auto* const negative = std::get_if<std::int64_t>(&value.value);
    const auto* const natural = std::get_if<std::uint64_t>(&value.value);
    Json& member = object[value.field->name];
    if (form.json == JsonType::listOfTexts) {
        member = flagNames(form, value.value);
    } else if (form.json == JsonType::boolean) {
        member = (negative != nullptr && *negative != 0) || (natural != nullptr && *natural != 0);
    } else if (form.json == JsonType::number && negative != nullptr) {
        member = *negative;
    } else if (form.json == JsonType::number && natural != nullptr) {
        member = *natural;
    } else {
        member = valueText(form, value.value);
    }
}

}  // namespace message_fields
