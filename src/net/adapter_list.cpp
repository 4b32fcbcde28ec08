#include "src/net/adapter_list.h"

namespace vpn {

AdapterList::AdapterList(ULONG family, ULONG flags) {
  ULONG size = 0;
  (void)GetAdaptersAddresses(family, flags, nullptr, nullptr, &size);  // fails; tells the size
  if (size == 0) {
    return;
  }
  buffer_.resize(size);
  auto* const list = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer_.data());
  if (GetAdaptersAddresses(family, flags, nullptr, list, &size) == NO_ERROR) {
    first_ = list;
  }
}

AdapterNames NamesOf(const IP_ADAPTER_ADDRESSES& adapter) {
  return {adapter.FriendlyName == nullptr ? L"" : adapter.FriendlyName,
          adapter.Description == nullptr ? L"" : adapter.Description};
}

bool HasFriendlyName(const IP_ADAPTER_ADDRESSES& adapter, const std::wstring& alias) {
  return adapter.FriendlyName != nullptr && alias == adapter.FriendlyName;
}

}  // namespace vpn
