// Files, directories and named pipes.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_FILES_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_FILES_H_

#include <win/kernel.h>

#define INVALID_FILE_ATTRIBUTES 0xFFFFFFFFu
#define FILE_ATTRIBUTE_READONLY 0x00000001u
#define FILE_ATTRIBUTE_HIDDEN 0x00000002u
#define FILE_ATTRIBUTE_SYSTEM 0x00000004u
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010u
#define FILE_ATTRIBUTE_ARCHIVE 0x00000020u
#define FILE_ATTRIBUTE_NORMAL 0x00000080u
#define FILE_SHARE_READ 0x00000001u
#define FILE_SHARE_WRITE 0x00000002u
#define FILE_SHARE_DELETE 0x00000004u
#define CREATE_NEW 1
#define CREATE_ALWAYS 2
#define OPEN_EXISTING 3
#define OPEN_ALWAYS 4
#define TRUNCATE_EXISTING 5
#define SECURITY_IDENTIFICATION 0x00010000u
#define SECURITY_SQOS_PRESENT 0x00100000u
#define LOCKFILE_FAIL_IMMEDIATELY 0x00000001u
#define LOCKFILE_EXCLUSIVE_LOCK 0x00000002u

#define PIPE_ACCESS_INBOUND 0x00000001u
#define PIPE_ACCESS_OUTBOUND 0x00000002u
#define PIPE_ACCESS_DUPLEX 0x00000003u
#define FILE_FLAG_FIRST_PIPE_INSTANCE 0x00080000u
#define FILE_FLAG_OVERLAPPED 0x40000000u
#define PIPE_TYPE_BYTE 0x00000000u
#define PIPE_TYPE_MESSAGE 0x00000004u
#define PIPE_READMODE_BYTE 0x00000000u
#define PIPE_WAIT 0x00000000u
#define PIPE_NOWAIT 0x00000001u
#define PIPE_REJECT_REMOTE_CLIENTS 0x00000008u
#define PIPE_UNLIMITED_INSTANCES 255u
#define SDDL_REVISION_1 1

struct OVERLAPPED {
  ULONG_PTR Internal;
  ULONG_PTR InternalHigh;
  DWORD Offset;
  DWORD OffsetHigh;
  HANDLE hEvent;
};
using LPOVERLAPPED = OVERLAPPED*;

struct WIN32_FIND_DATAW {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  DWORD dwReserved0;
  DWORD dwReserved1;
  WCHAR cFileName[MAX_PATH];
  WCHAR cAlternateFileName[14];
};

HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* attributes,
                   DWORD disposition, DWORD flags, HANDLE templateFile);
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD count, DWORD* read, OVERLAPPED* overlapped);
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD count, DWORD* written, OVERLAPPED* overlapped);
BOOL FlushFileBuffers(HANDLE file);
BOOL LockFileEx(HANDLE file, DWORD flags, DWORD reserved, DWORD countLow, DWORD countHigh,
                OVERLAPPED* place);
BOOL UnlockFileEx(HANDLE file, DWORD reserved, DWORD countLow, DWORD countHigh, OVERLAPPED* place);
BOOL DeleteFileW(LPCWSTR name);
#define MOVEFILE_REPLACE_EXISTING 0x00000001u
BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags);
DWORD GetFileAttributesW(LPCWSTR name);
struct WIN32_FILE_ATTRIBUTE_DATA {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
};
enum GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard };
BOOL GetFileAttributesExW(LPCWSTR name, GET_FILEEX_INFO_LEVELS level, LPVOID data);
HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data);
BOOL FindClose(HANDLE find);
DWORD GetFullPathNameW(LPCWSTR name, DWORD size, LPWSTR buffer, LPWSTR* filePart);
BOOL SetCurrentDirectoryW(LPCWSTR directory);

HANDLE CreateNamedPipeW(LPCWSTR name, DWORD openMode, DWORD pipeMode, DWORD maxInstances,
                        DWORD outBufferSize, DWORD inBufferSize, DWORD defaultTimeOut,
                        SECURITY_ATTRIBUTES* attributes);
BOOL ConnectNamedPipe(HANDLE pipe, OVERLAPPED* overlapped);
BOOL DisconnectNamedPipe(HANDLE pipe);
BOOL PeekNamedPipe(HANDLE pipe, LPVOID buffer, DWORD size, DWORD* read, DWORD* available,
                   DWORD* left);
BOOL ConvertStringSecurityDescriptorToSecurityDescriptorW(LPCWSTR text, DWORD revision,
                                                          PSECURITY_DESCRIPTOR* descriptor,
                                                          ULONG* size);

using SECURITY_INFORMATION = DWORD;
#define OWNER_SECURITY_INFORMATION 0x00000001u
#define DACL_SECURITY_INFORMATION 0x00000004u
enum SE_OBJECT_TYPE { SE_UNKNOWN_OBJECT_TYPE = 0, SE_FILE_OBJECT };
DWORD GetNamedSecurityInfoW(LPCWSTR name, SE_OBJECT_TYPE type, DWORD information, LPVOID* owner,
                            LPVOID* group, LPVOID* dacl, LPVOID* sacl,
                            PSECURITY_DESCRIPTOR* descriptor);
BOOL ConvertSecurityDescriptorToStringSecurityDescriptorW(PSECURITY_DESCRIPTOR descriptor,
                                                          DWORD revision, DWORD information,
                                                          LPWSTR* text, ULONG* size);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_FILES_H_
