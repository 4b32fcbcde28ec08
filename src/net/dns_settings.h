// SetInterfaceDnsSettings for tool chains whose netioapi.h is older than Windows 10 2004, which
// brought it. Names, layout and values are the platform's.
#ifndef TAVRIN_SRC_NET_DNS_SETTINGS_H_
#define TAVRIN_SRC_NET_DNS_SETTINGS_H_

#include "src/net/ip_helper.h"

#ifndef DNS_INTERFACE_SETTINGS_VERSION1
#define DNS_INTERFACE_SETTINGS_VERSION1 0x0001
#define DNS_SETTING_NAMESERVER 0x0002

struct DNS_INTERFACE_SETTINGS {
  ULONG Version;
  ULONG64 Flags;
  PWSTR Domain;
  PWSTR NameServer;
  PWSTR SearchList;
  ULONG RegistrationEnabled;
  ULONG RegisterAdapterName;
  ULONG EnableLLMNR;
  ULONG QueryAdapterName;
  PWSTR ProfileNameServer;
};

extern "C" __declspec(dllimport) DWORD WINAPI
    SetInterfaceDnsSettings(GUID Interface, const DNS_INTERFACE_SETTINGS* Settings);
#endif  // DNS_INTERFACE_SETTINGS_VERSION1

#endif  // TAVRIN_SRC_NET_DNS_SETTINGS_H_
