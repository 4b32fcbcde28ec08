// WinHTTP, as far as a synchronous client without options needs it.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_HTTP_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_HTTP_H_

#include <win/base.h>

using HINTERNET = void*;
using INTERNET_PORT = WORD;
using INTERNET_SCHEME = int;

#define INTERNET_DEFAULT_PORT 0
#define INTERNET_DEFAULT_HTTP_PORT 80
#define INTERNET_DEFAULT_HTTPS_PORT 443
#define INTERNET_SCHEME_HTTP 1
#define INTERNET_SCHEME_HTTPS 2

struct URL_COMPONENTS {
  DWORD dwStructSize;
  LPWSTR lpszScheme;
  DWORD dwSchemeLength;
  INTERNET_SCHEME nScheme;
  LPWSTR lpszHostName;
  DWORD dwHostNameLength;
  INTERNET_PORT nPort;
  LPWSTR lpszUserName;
  DWORD dwUserNameLength;
  LPWSTR lpszPassword;
  DWORD dwPasswordLength;
  LPWSTR lpszUrlPath;
  DWORD dwUrlPathLength;
  LPWSTR lpszExtraInfo;
  DWORD dwExtraInfoLength;
};
using LPURL_COMPONENTS = URL_COMPONENTS*;
static_assert(sizeof(URL_COMPONENTS) == 104);

#define WINHTTP_ACCESS_TYPE_DEFAULT_PROXY 0
#define WINHTTP_ACCESS_TYPE_NO_PROXY 1
#define WINHTTP_ACCESS_TYPE_NAMED_PROXY 3
#define WINHTTP_ACCESS_TYPE_AUTOMATIC_PROXY 4
#define WINHTTP_NO_PROXY_NAME nullptr
#define WINHTTP_NO_PROXY_BYPASS nullptr
#define WINHTTP_NO_REFERER nullptr
#define WINHTTP_DEFAULT_ACCEPT_TYPES nullptr
#define WINHTTP_NO_ADDITIONAL_HEADERS nullptr
#define WINHTTP_NO_REQUEST_DATA nullptr
#define WINHTTP_HEADER_NAME_BY_INDEX nullptr
#define WINHTTP_NO_HEADER_INDEX nullptr
#define WINHTTP_FLAG_ASYNC 0x10000000u
#define WINHTTP_FLAG_SECURE 0x00800000u
#define WINHTTP_QUERY_STATUS_CODE 19u
#define WINHTTP_QUERY_FLAG_NUMBER 0x20000000u

#define WINHTTP_ERROR_BASE 12000
#define ERROR_WINHTTP_OUT_OF_HANDLES 12001
#define ERROR_WINHTTP_TIMEOUT 12002
#define ERROR_WINHTTP_INTERNAL_ERROR 12004
#define ERROR_WINHTTP_INVALID_URL 12005
#define ERROR_WINHTTP_UNRECOGNIZED_SCHEME 12006
#define ERROR_WINHTTP_NAME_NOT_RESOLVED 12007
#define ERROR_WINHTTP_LOGIN_FAILURE 12015
#define ERROR_WINHTTP_OPERATION_CANCELLED 12017
#define ERROR_WINHTTP_INCORRECT_HANDLE_TYPE 12018
#define ERROR_WINHTTP_INCORRECT_HANDLE_STATE 12019
#define ERROR_WINHTTP_CANNOT_CONNECT 12029
#define ERROR_WINHTTP_CONNECTION_ERROR 12030
#define ERROR_WINHTTP_RESEND_REQUEST 12032
#define ERROR_WINHTTP_HEADER_NOT_FOUND 12150
#define ERROR_WINHTTP_INVALID_SERVER_RESPONSE 12152
#define ERROR_WINHTTP_SECURE_CHANNEL_ERROR 12157
#define ERROR_WINHTTP_SECURE_FAILURE 12175

BOOL WinHttpCrackUrl(LPCWSTR url, DWORD length, DWORD flags, URL_COMPONENTS* components);
HINTERNET WinHttpOpen(LPCWSTR agent, DWORD accessType, LPCWSTR proxy, LPCWSTR bypass, DWORD flags);
BOOL WinHttpSetTimeouts(HINTERNET handle, int resolve, int connect, int send, int receive);
HINTERNET WinHttpConnect(HINTERNET session, LPCWSTR host, INTERNET_PORT port, DWORD reserved);
HINTERNET WinHttpOpenRequest(HINTERNET connection, LPCWSTR method, LPCWSTR path, LPCWSTR version,
                             LPCWSTR referrer, LPCWSTR* acceptTypes, DWORD flags);
BOOL WinHttpSendRequest(HINTERNET request, LPCWSTR headers, DWORD headersLength, LPVOID optional,
                        DWORD optionalLength, DWORD totalLength, DWORD_PTR context);
BOOL WinHttpReceiveResponse(HINTERNET request, LPVOID reserved);
BOOL WinHttpQueryHeaders(HINTERNET request, DWORD infoLevel, LPCWSTR name, LPVOID buffer,
                         DWORD* bufferLength, DWORD* index);
BOOL WinHttpQueryDataAvailable(HINTERNET request, DWORD* available);
BOOL WinHttpReadData(HINTERNET request, LPVOID buffer, DWORD bytesToRead, DWORD* bytesRead);
BOOL WinHttpCloseHandle(HINTERNET handle);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_HTTP_H_
