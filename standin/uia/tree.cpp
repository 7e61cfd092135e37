#include "standin/uia/tree.h"

namespace standin::uia {

HRESULT Tree::Enter(const char*) {
  return S_OK;
}

void Tree::Leave() {}

void Tree::Made(const void*, const char*) {}

void Tree::Destroyed(const void*) {}

BSTR Tree::NewString(TextView text) {
  return SysAllocString(Text(text).c_str());
}

}  // namespace standin::uia
