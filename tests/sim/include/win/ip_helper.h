// The IP Helper API: routes, addresses, name servers, adapters.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_IP_HELPER_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_IP_HELPER_H_

#include <win/sockets.h>

using NETIO_STATUS = DWORD;
using NET_IFINDEX = ULONG;
using IF_INDEX = ULONG;
using IFTYPE = ULONG;

#define IF_MAX_STRING_SIZE 256
#define NDIS_IF_MAX_STRING_SIZE IF_MAX_STRING_SIZE
#define IF_TYPE_ETHERNET_CSMACD 6
#define IF_TYPE_SOFTWARE_LOOPBACK 24
#define IF_TYPE_PROP_VIRTUAL 53
#define MAX_ADAPTER_ADDRESS_LENGTH 8

union NET_LUID {
  ULONG64 Value;
  struct {
    ULONG64 Reserved : 24;
    ULONG64 NetLuidIndex : 24;
    ULONG64 IfType : 16;
  } Info;
};
using IF_LUID = NET_LUID;
using PNET_LUID = NET_LUID*;

struct IP_ADDRESS_PREFIX {
  SOCKADDR_INET Prefix;
  UINT8 PrefixLength;
};

enum NL_ROUTE_PROTOCOL {
  MIB_IPPROTO_OTHER = 1,
  MIB_IPPROTO_LOCAL = 2,
  MIB_IPPROTO_NETMGMT = 3,
  RouteProtocolOther = 1,
  RouteProtocolLocal = 2,
  RouteProtocolNetMgmt = 3,
};
enum NL_ROUTE_ORIGIN { NlroManual, NlroWellKnown, NlroDHCP, NlroRouterAdvertisement, Nlro6to4 };

struct MIB_IPFORWARD_ROW2 {
  NET_LUID InterfaceLuid;
  NET_IFINDEX InterfaceIndex;
  IP_ADDRESS_PREFIX DestinationPrefix;
  SOCKADDR_INET NextHop;
  UCHAR SitePrefixLength;
  ULONG ValidLifetime;
  ULONG PreferredLifetime;
  ULONG Metric;
  NL_ROUTE_PROTOCOL Protocol;
  BOOLEAN Loopback;
  BOOLEAN AutoconfigureAddress;
  BOOLEAN Publish;
  BOOLEAN Immortal;
  ULONG Age;
  NL_ROUTE_ORIGIN Origin;
};
using PMIB_IPFORWARD_ROW2 = MIB_IPFORWARD_ROW2*;

struct MIB_IPFORWARD_TABLE2 {
  ULONG NumEntries;
  MIB_IPFORWARD_ROW2 Table[ANY_SIZE];
};
using PMIB_IPFORWARD_TABLE2 = MIB_IPFORWARD_TABLE2*;

enum NL_PREFIX_ORIGIN {
  IpPrefixOriginOther = 0,
  IpPrefixOriginManual,
  IpPrefixOriginWellKnown,
  IpPrefixOriginDhcp,
  IpPrefixOriginRouterAdvertisement,
  IpPrefixOriginUnchanged = 1 << 4
};
enum NL_SUFFIX_ORIGIN {
  IpSuffixOriginOther = 0,
  IpSuffixOriginManual,
  IpSuffixOriginWellKnown,
  IpSuffixOriginDhcp,
  IpSuffixOriginLinkLayerAddress,
  IpSuffixOriginRandom,
  IpSuffixOriginUnchanged = 1 << 4
};
enum NL_DAD_STATE {
  IpDadStateInvalid = 0,
  IpDadStateTentative,
  IpDadStateDuplicate,
  IpDadStateDeprecated,
  IpDadStatePreferred,
};
using IP_PREFIX_ORIGIN = NL_PREFIX_ORIGIN;
using IP_SUFFIX_ORIGIN = NL_SUFFIX_ORIGIN;
using IP_DAD_STATE = NL_DAD_STATE;

struct SCOPE_ID {
  ULONG Value;
};

struct MIB_UNICASTIPADDRESS_ROW {
  SOCKADDR_INET Address;
  NET_LUID InterfaceLuid;
  NET_IFINDEX InterfaceIndex;
  NL_PREFIX_ORIGIN PrefixOrigin;
  NL_SUFFIX_ORIGIN SuffixOrigin;
  ULONG ValidLifetime;
  ULONG PreferredLifetime;
  UINT8 OnLinkPrefixLength;
  BOOLEAN SkipAsSource;
  NL_DAD_STATE DadState;
  SCOPE_ID ScopeId;
  LARGE_INTEGER CreationTimeStamp;
};
using PMIB_UNICASTIPADDRESS_ROW = MIB_UNICASTIPADDRESS_ROW*;

struct MIB_UNICASTIPADDRESS_TABLE {
  ULONG NumEntries;
  MIB_UNICASTIPADDRESS_ROW Table[ANY_SIZE];
};
using PMIB_UNICASTIPADDRESS_TABLE = MIB_UNICASTIPADDRESS_TABLE*;

enum NL_ROUTER_DISCOVERY_BEHAVIOR {
  RouterDiscoveryDisabled = 0,
  RouterDiscoveryEnabled,
  RouterDiscoveryDhcp,
  RouterDiscoveryUnchanged = -1
};
enum NL_LINK_LOCAL_ADDRESS_BEHAVIOR {
  LinkLocalAlwaysOff = 0,
  LinkLocalDelayed,
  LinkLocalAlwaysOn,
  LinkLocalUnchanged = -1
};
struct NL_INTERFACE_OFFLOAD_ROD {
  BOOLEAN bits;
};

struct MIB_IPINTERFACE_ROW {
  ADDRESS_FAMILY Family;
  NET_LUID InterfaceLuid;
  NET_IFINDEX InterfaceIndex;
  ULONG MaxReassemblySize;
  ULONG64 InterfaceIdentifier;
  ULONG MinRouterAdvertisementInterval;
  ULONG MaxRouterAdvertisementInterval;
  BOOLEAN AdvertisingEnabled;
  BOOLEAN ForwardingEnabled;
  BOOLEAN WeakHostSend;
  BOOLEAN WeakHostReceive;
  BOOLEAN UseAutomaticMetric;
  BOOLEAN UseNeighborUnreachabilityDetection;
  BOOLEAN ManagedAddressConfigurationSupported;
  BOOLEAN OtherStatefulConfigurationSupported;
  BOOLEAN AdvertiseDefaultRoute;
  NL_ROUTER_DISCOVERY_BEHAVIOR RouterDiscoveryBehavior;
  ULONG DadTransmits;
  ULONG BaseReachableTime;
  ULONG RetransmitTime;
  ULONG PathMtuDiscoveryTimeout;
  NL_LINK_LOCAL_ADDRESS_BEHAVIOR LinkLocalAddressBehavior;
  ULONG LinkLocalAddressTimeout;
  ULONG ZoneIndices[16];
  ULONG SitePrefixLength;
  ULONG Metric;
  ULONG NlMtu;
  BOOLEAN Connected;
  BOOLEAN SupportsWakeUpPatterns;
  BOOLEAN SupportsNeighborDiscovery;
  BOOLEAN SupportsRouterDiscovery;
  ULONG ReachableTime;
  NL_INTERFACE_OFFLOAD_ROD TransmitOffload;
  NL_INTERFACE_OFFLOAD_ROD ReceiveOffload;
  BOOLEAN DisableDefaultRoutes;
};
using PMIB_IPINTERFACE_ROW = MIB_IPINTERFACE_ROW*;

#define DNS_INTERFACE_SETTINGS_VERSION1 0x0001
#define DNS_SETTING_IPV6 0x0001
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

enum IF_OPER_STATUS {
  IfOperStatusUp = 1,
  IfOperStatusDown,
  IfOperStatusTesting,
  IfOperStatusUnknown,
  IfOperStatusDormant,
  IfOperStatusNotPresent,
  IfOperStatusLowerLayerDown
};

#define GAA_FLAG_SKIP_UNICAST 0x0001
#define GAA_FLAG_SKIP_DNS_SERVER 0x0008
#define GAA_FLAG_INCLUDE_PREFIX 0x0010
#define GAA_FLAG_SKIP_FRIENDLY_NAME 0x0020

struct IP_ADAPTER_UNICAST_ADDRESS {
  union {
    ULONGLONG Alignment;
    struct {
      ULONG Length;
      DWORD Flags;
    } s;
  };
  IP_ADAPTER_UNICAST_ADDRESS* Next;
  SOCKET_ADDRESS Address;
  IP_PREFIX_ORIGIN PrefixOrigin;
  IP_SUFFIX_ORIGIN SuffixOrigin;
  IP_DAD_STATE DadState;
  ULONG ValidLifetime;
  ULONG PreferredLifetime;
  ULONG LeaseLifetime;
  UINT8 OnLinkPrefixLength;
};
using PIP_ADAPTER_UNICAST_ADDRESS = IP_ADAPTER_UNICAST_ADDRESS*;

struct IP_ADAPTER_DNS_SERVER_ADDRESS {
  union {
    ULONGLONG Alignment;
    struct {
      ULONG Length;
      DWORD Reserved;
    } s;
  };
  IP_ADAPTER_DNS_SERVER_ADDRESS* Next;
  SOCKET_ADDRESS Address;
};
using PIP_ADAPTER_DNS_SERVER_ADDRESS = IP_ADAPTER_DNS_SERVER_ADDRESS*;

struct IP_ADAPTER_ADDRESSES {
  ULONG Length;
  IF_INDEX IfIndex;
  IP_ADAPTER_ADDRESSES* Next;
  PCHAR AdapterName;
  PIP_ADAPTER_UNICAST_ADDRESS FirstUnicastAddress;
  void* FirstAnycastAddress;
  void* FirstMulticastAddress;
  PIP_ADAPTER_DNS_SERVER_ADDRESS FirstDnsServerAddress;
  PWCHAR DnsSuffix;
  PWCHAR Description;
  PWCHAR FriendlyName;
  BYTE PhysicalAddress[MAX_ADAPTER_ADDRESS_LENGTH];
  ULONG PhysicalAddressLength;
  ULONG Flags;
  ULONG Mtu;
  IFTYPE IfType;
  IF_OPER_STATUS OperStatus;
  IF_INDEX Ipv6IfIndex;
  ULONG ZoneIndices[16];
  void* FirstPrefix;
  ULONG64 TransmitLinkSpeed;
  ULONG64 ReceiveLinkSpeed;
  void* FirstWinsServerAddress;
  void* FirstGatewayAddress;
  ULONG Ipv4Metric;
  ULONG Ipv6Metric;
  IF_LUID Luid;
  SOCKET_ADDRESS Dhcpv4Server;
  ULONG CompartmentId;
  GUID NetworkGuid;
};
using PIP_ADAPTER_ADDRESSES = IP_ADAPTER_ADDRESSES*;
using IP_ADAPTER_ADDRESSES_LH = IP_ADAPTER_ADDRESSES;

void InitializeIpForwardEntry(MIB_IPFORWARD_ROW2* row);
NETIO_STATUS GetIpForwardTable2(ADDRESS_FAMILY family, MIB_IPFORWARD_TABLE2** table);
NETIO_STATUS CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2* row);
NETIO_STATUS DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2* row);
void FreeMibTable(PVOID memory);
NETIO_STATUS ConvertInterfaceAliasToLuid(const WCHAR* alias, NET_LUID* luid);
NETIO_STATUS ConvertInterfaceLuidToAlias(const NET_LUID* luid, PWSTR alias, SIZE_T length);
NETIO_STATUS ConvertInterfaceLuidToIndex(const NET_LUID* luid, NET_IFINDEX* index);
NETIO_STATUS ConvertInterfaceLuidToGuid(const NET_LUID* luid, GUID* guid);
NETIO_STATUS GetUnicastIpAddressTable(ADDRESS_FAMILY family, MIB_UNICASTIPADDRESS_TABLE** table);
void InitializeUnicastIpAddressEntry(MIB_UNICASTIPADDRESS_ROW* row);
NETIO_STATUS CreateUnicastIpAddressEntry(const MIB_UNICASTIPADDRESS_ROW* row);
NETIO_STATUS DeleteUnicastIpAddressEntry(const MIB_UNICASTIPADDRESS_ROW* row);
void InitializeIpInterfaceEntry(MIB_IPINTERFACE_ROW* row);
NETIO_STATUS GetIpInterfaceEntry(MIB_IPINTERFACE_ROW* row);
NETIO_STATUS SetIpInterfaceEntry(MIB_IPINTERFACE_ROW* row);
NETIO_STATUS SetInterfaceDnsSettings(GUID interfaceGuid, const DNS_INTERFACE_SETTINGS* settings);
ULONG GetAdaptersAddresses(ULONG family, ULONG flags, PVOID reserved, IP_ADAPTER_ADDRESSES* buffer,
                           ULONG* size);

enum TCP_TABLE_CLASS { TCP_TABLE_BASIC_LISTENER, TCP_TABLE_OWNER_PID_LISTENER = 3 };
struct MIB_TCPROW_OWNER_PID {
  DWORD dwState;
  DWORD dwLocalAddr;
  DWORD dwLocalPort;
  DWORD dwRemoteAddr;
  DWORD dwRemotePort;
  DWORD dwOwningPid;
};
struct MIB_TCPTABLE_OWNER_PID {
  DWORD dwNumEntries;
  MIB_TCPROW_OWNER_PID table[ANY_SIZE];
};
DWORD GetExtendedTcpTable(LPVOID table, DWORD* size, BOOL order, ULONG family,
                          TCP_TABLE_CLASS tableClass, ULONG reserved);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_IP_HELPER_H_
