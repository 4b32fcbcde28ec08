// Winsock. The functions have C++ linkage here, so they are overloads beside the C library's own
// of the same names and never meet them in the linker. A source file that includes this must not
// include the host's <sys/socket.h>, <netinet/in.h>, <arpa/inet.h> or <netdb.h>.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_SOCKETS_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_SOCKETS_H_

#include <win/base.h>

// The host's fd_set and timeval come with <cstdlib> anyway; they have to be declared before the
// names below are taken over.
#include <sys/select.h>
#include <sys/types.h>

#undef FD_SETSIZE
#undef FD_ZERO
#undef FD_SET
#undef FD_CLR
#undef FD_ISSET

using SOCKET = std::uintptr_t;
using ADDRESS_FAMILY = USHORT;
using TIMEVAL = timeval;

#define INVALID_SOCKET (~static_cast<SOCKET>(0))
#define SOCKET_ERROR (-1)
#define AF_UNSPEC 0
#define AF_INET 2
#define AF_INET6 23
#define SOCK_STREAM 1
#define SOCK_DGRAM 2
#define SOL_SOCKET 0xffff
#define SO_ERROR 0x1007
#define FIONBIO (static_cast<LONG>(0x8004667Eu))
#define INADDR_LOOPBACK 0x7f000001u
#define INADDR_ANY 0u
#define AI_PASSIVE 0x1
#define AI_NUMERICHOST 0x4
#define FD_SETSIZE 64

enum IPPROTO { IPPROTO_TCP = 6, IPPROTO_UDP = 17 };

struct in_addr {
  union {
    struct {
      UCHAR s_b1, s_b2, s_b3, s_b4;
    } S_un_b;
    struct {
      USHORT s_w1, s_w2;
    } S_un_w;
    ULONG S_addr;
  } S_un;
};
using IN_ADDR = in_addr;
#define s_addr S_un.S_addr

struct in6_addr {
  union {
    UCHAR Byte[16];
    USHORT Word[8];
  } u;
};
using IN6_ADDR = in6_addr;

struct sockaddr {
  ADDRESS_FAMILY sa_family;
  CHAR sa_data[14];
};
using SOCKADDR = sockaddr;
using LPSOCKADDR = sockaddr*;

struct sockaddr_in {
  ADDRESS_FAMILY sin_family;
  USHORT sin_port;
  in_addr sin_addr;
  CHAR sin_zero[8];
};
using SOCKADDR_IN = sockaddr_in;

struct sockaddr_in6 {
  ADDRESS_FAMILY sin6_family;
  USHORT sin6_port;
  ULONG sin6_flowinfo;
  in6_addr sin6_addr;
  ULONG sin6_scope_id;
};
using SOCKADDR_IN6 = sockaddr_in6;

union SOCKADDR_INET {
  SOCKADDR_IN Ipv4;
  SOCKADDR_IN6 Ipv6;
  ADDRESS_FAMILY si_family;
};

struct SOCKET_ADDRESS {
  LPSOCKADDR lpSockaddr;
  INT iSockaddrLength;
};

struct sim_fd_set {
  UINT fd_count;
  SOCKET fd_array[FD_SETSIZE];
};
#define fd_set sim_fd_set

namespace sim {
void FdAdd(SOCKET socket, sim_fd_set* set);
void FdRemove(SOCKET socket, sim_fd_set* set);
bool FdHas(SOCKET socket, const sim_fd_set* set);
}  // namespace sim
#define FD_ZERO(set) (static_cast<void>((set)->fd_count = 0))
#define FD_SET(socket, set) sim::FdAdd((socket), (set))
#define FD_CLR(socket, set) sim::FdRemove((socket), (set))
#define FD_ISSET(socket, set) sim::FdHas((socket), (set))

struct WSADATA {
  WORD wVersion;
  WORD wHighVersion;
  unsigned short iMaxSockets;
  unsigned short iMaxUdpDg;
  char* lpVendorInfo;
  char szDescription[257];
  char szSystemStatus[129];
};
using LPWSADATA = WSADATA*;

struct addrinfo {
  int ai_flags;
  int ai_family;
  int ai_socktype;
  int ai_protocol;
  size_t ai_addrlen;
  char* ai_canonname;
  sockaddr* ai_addr;
  addrinfo* ai_next;
};
using ADDRINFOA = addrinfo;

struct addrinfoW {
  int ai_flags;
  int ai_family;
  int ai_socktype;
  int ai_protocol;
  size_t ai_addrlen;
  PWSTR ai_canonname;
  sockaddr* ai_addr;
  addrinfoW* ai_next;
};
using ADDRINFOW = addrinfoW;
using PADDRINFOW = addrinfoW*;

int WSAStartup(WORD version, WSADATA* data);
int WSACleanup();
int WSAGetLastError();
SOCKET socket(int family, int type, int protocol);
int closesocket(SOCKET socket);
int ioctlsocket(SOCKET socket, LONG command, u_long* argument);
int connect(SOCKET socket, const sockaddr* address, int length);
int select(int ignored, sim_fd_set* readable, sim_fd_set* writable, sim_fd_set* exceptional,
           const timeval* timeout);
int getsockopt(SOCKET socket, int level, int option, char* value, int* length);
USHORT htons(USHORT value);
USHORT ntohs(USHORT value);
ULONG htonl(ULONG value);
ULONG ntohl(ULONG value);
INT GetAddrInfoW(PCWSTR node, PCWSTR service, const ADDRINFOW* hints, ADDRINFOW** result);
void FreeAddrInfoW(ADDRINFOW* list);
INT getaddrinfo(PCSTR node, PCSTR service, const ADDRINFOA* hints, ADDRINFOA** result);
void freeaddrinfo(ADDRINFOA* list);
PCSTR inet_ntop(INT family, const void* address, PSTR buffer, size_t size);
INT InetPtonW(INT family, PCWSTR text, PVOID address);
PCWSTR InetNtopW(INT family, const void* address, PWSTR buffer, size_t size);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_SOCKETS_H_
