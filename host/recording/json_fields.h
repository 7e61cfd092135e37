// Fields of a JSON object, each checked: a wrong one ends with a line that says where it stands.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "host/recording/record_json.h"

namespace host {

class JsonFields {
 public:
  // `where` is what its lines begin with: the file, and the place in it.
  JsonFields(const Json& object, std::string where);

  bool Has(const char* field) const;
  const Json& At(const char* field) const;
  const Json& List(const char* field) const;
  std::string Text(const char* field) const;
  std::string Text(const char* field, const std::string& otherwise) const;
  std::int32_t Number(const char* field) const;
  std::int32_t Number(const char* field, std::int32_t otherwise) const;
  bool Flag(const char* field) const;
  // A list of exactly so many numbers.
  std::vector<std::int32_t> Numbers(const char* field, std::size_t count) const;
  // A field that is not one of these is a mistake, not something to pass over.
  void AllowOnly(std::initializer_list<const char*> fields) const;
  [[noreturn]] void Refuse(const std::string& field, const std::string& why) const;

 private:
  const Json& object_;
  std::string where_;
};

}  // namespace host
