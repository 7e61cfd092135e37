#include "host/recording/json_fields.h"

#include <algorithm>
#include <utility>

#include "host/base/failure.h"
#include "host/base/text.h"

namespace host {

namespace {

bool IsNumber(const Json& value) {
  return value.is_number_unsigned()
             ? std::in_range<std::int32_t>(value.get<std::uint64_t>())
             : value.is_number_integer() && std::in_range<std::int32_t>(value.get<std::int64_t>());
}

}  // namespace

JsonFields::JsonFields(const Json& object, std::string where) : object_(object), where_(std::move(where)) {
  if (!object.is_object()) {
    throw Failure(ExitCode::BadFile, where_ + ": is not an object");
  }
}

bool JsonFields::Has(const char* field) const {
  return object_.contains(field);
}

const Json& JsonFields::At(const char* field) const {
  const auto found = object_.find(field);
  if (found == object_.end()) {
    Refuse(field, "is missing");
  }
  return *found;
}

const Json& JsonFields::List(const char* field) const {
  const Json& value = At(field);
  if (!value.is_array()) {
    Refuse(field, "is not a list");
  }
  return value;
}

std::string JsonFields::Text(const char* field) const {
  const Json& value = At(field);
  if (!value.is_string()) {
    Refuse(field, "is not a text");
  }
  std::string text = value.get<std::string>();
  if (text.find('\0') != std::string::npos) {
    Refuse(field, "holds a NUL character");
  }
  return text;
}

std::string JsonFields::Text(const char* field, const std::string& otherwise) const {
  return Has(field) ? Text(field) : otherwise;
}

std::int32_t JsonFields::Number(const char* field) const {
  const Json& value = At(field);
  if (!IsNumber(value)) {
    Refuse(field, "is not a whole number of 32 bits");
  }
  return value.get<std::int32_t>();
}

std::int32_t JsonFields::Number(const char* field, std::int32_t otherwise) const {
  return Has(field) ? Number(field) : otherwise;
}

bool JsonFields::Flag(const char* field) const {
  const Json& value = At(field);
  if (!value.is_boolean()) {
    Refuse(field, "is neither true nor false");
  }
  return value.get<bool>();
}

std::vector<std::int32_t> JsonFields::Numbers(const char* field, std::size_t count) const {
  const Json& list = List(field);
  if (list.size() != count || !std::all_of(list.begin(), list.end(), IsNumber)) {
    Refuse(field, "is not a list of " + std::to_string(count) + " whole numbers of 32 bits");
  }
  return list.get<std::vector<std::int32_t>>();
}

void JsonFields::AllowOnly(std::initializer_list<const char*> fields) const {
  for (const auto& [name, value] : object_.items()) {
    if (std::find(fields.begin(), fields.end(), name) == fields.end()) {
      Refuse(Shortened(name, kNameColumns), "is not known here");
    }
  }
}

void JsonFields::Refuse(const std::string& field, const std::string& why) const {
  throw Failure(ExitCode::BadFile, where_ + ": field \"" + field + "\" " + why);
}

}  // namespace host
