// The machine's adapters at one moment, in the platform's list order.
#ifndef TAVRIN_SRC_NET_ADAPTER_LIST_H_
#define TAVRIN_SRC_NET_ADAPTER_LIST_H_

#include "src/net/ip_helper.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vpn {

class AdapterList {
 public:
  // `family` and `flags` as GetAdaptersAddresses takes them. One call for the size, one for the
  // list; a list that has outgrown the buffer in between counts as unreadable.
  AdapterList(ULONG family, ULONG flags);

  // Null when there is no adapter or the list can't be read. Valid as long as this object.
  const IP_ADAPTER_ADDRESSES* first() const { return first_; }

 private:
  std::vector<std::byte> buffer_;
  const IP_ADAPTER_ADDRESSES* first_ = nullptr;
};

struct AdapterNames {
  std::wstring friendlyName;  // empty for null, both
  std::wstring description;
};
AdapterNames NamesOf(const IP_ADAPTER_ADDRESSES& adapter);

// Exact, case included; a null name equals nothing.
bool HasFriendlyName(const IP_ADAPTER_ADDRESSES& adapter, const std::wstring& alias);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_ADAPTER_LIST_H_
