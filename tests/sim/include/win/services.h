// The console and the service manager.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_SERVICES_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_SERVICES_H_

#include <win/base.h>

#define CTRL_C_EVENT 0u
#define CTRL_BREAK_EVENT 1u
#define CTRL_CLOSE_EVENT 2u
#define CTRL_LOGOFF_EVENT 5u
#define CTRL_SHUTDOWN_EVENT 6u

using PHANDLER_ROUTINE = BOOL (*)(DWORD);

BOOL SetConsoleOutputCP(UINT codePage);
BOOL SetConsoleCtrlHandler(PHANDLER_ROUTINE handler, BOOL add);
BOOL FreeConsole();

using SC_HANDLE = struct SC_HANDLE__*;
using SERVICE_STATUS_HANDLE = struct SERVICE_STATUS_HANDLE__*;

#define SC_MANAGER_CONNECT 0x0001u
#define SC_MANAGER_CREATE_SERVICE 0x0002u
#define SC_MANAGER_ALL_ACCESS 0xF003Fu
#define SERVICE_QUERY_CONFIG 0x0001u
#define SERVICE_CHANGE_CONFIG 0x0002u
#define SERVICE_QUERY_STATUS 0x0004u
#define SERVICE_START 0x0010u
#define SERVICE_STOP 0x0020u
#define SERVICE_ALL_ACCESS 0xF01FFu
#define SERVICE_WIN32_OWN_PROCESS 0x00000010u
#define SERVICE_AUTO_START 2u
#define SERVICE_DEMAND_START 3u
#define SERVICE_ERROR_NORMAL 1u
#define SERVICE_CONFIG_DESCRIPTION 1u
#define SERVICE_CONTROL_STOP 1u
#define SERVICE_CONTROL_PAUSE 2u
#define SERVICE_CONTROL_CONTINUE 3u
#define SERVICE_CONTROL_INTERROGATE 4u
#define SERVICE_CONTROL_SHUTDOWN 5u
#define SERVICE_STOPPED 1u
#define SERVICE_START_PENDING 2u
#define SERVICE_STOP_PENDING 3u
#define SERVICE_RUNNING 4u
#define SERVICE_ACCEPT_STOP 1u
#define SERVICE_ACCEPT_SHUTDOWN 4u

struct SERVICE_STATUS {
  DWORD dwServiceType;
  DWORD dwCurrentState;
  DWORD dwControlsAccepted;
  DWORD dwWin32ExitCode;
  DWORD dwServiceSpecificExitCode;
  DWORD dwCheckPoint;
  DWORD dwWaitHint;
};
using LPSERVICE_STATUS = SERVICE_STATUS*;
static_assert(sizeof(SERVICE_STATUS) == 28);

using LPSERVICE_MAIN_FUNCTIONW = void (*)(DWORD, LPWSTR*);
using LPHANDLER_FUNCTION_EX = DWORD (*)(DWORD, DWORD, LPVOID, LPVOID);

struct SERVICE_TABLE_ENTRYW {
  LPWSTR lpServiceName;
  LPSERVICE_MAIN_FUNCTIONW lpServiceProc;
};

struct SERVICE_DESCRIPTIONW {
  LPWSTR lpDescription;
};

struct QUERY_SERVICE_CONFIGW {
  DWORD dwServiceType;
  DWORD dwStartType;
  DWORD dwErrorControl;
  LPWSTR lpBinaryPathName;
  LPWSTR lpLoadOrderGroup;
  DWORD dwTagId;
  LPWSTR lpDependencies;
  LPWSTR lpServiceStartName;
  LPWSTR lpDisplayName;
};

BOOL QueryServiceConfigW(SC_HANDLE service, QUERY_SERVICE_CONFIGW* config, DWORD size,
                         DWORD* needed);
BOOL StartServiceCtrlDispatcherW(const SERVICE_TABLE_ENTRYW* table);
SERVICE_STATUS_HANDLE RegisterServiceCtrlHandlerExW(LPCWSTR name, LPHANDLER_FUNCTION_EX handler,
                                                    LPVOID context);
BOOL SetServiceStatus(SERVICE_STATUS_HANDLE handle, SERVICE_STATUS* status);
SC_HANDLE OpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD access);
SC_HANDLE OpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access);
SC_HANDLE CreateServiceW(SC_HANDLE manager, LPCWSTR name, LPCWSTR displayName, DWORD access,
                         DWORD type, DWORD startType, DWORD errorControl, LPCWSTR binaryPath,
                         LPCWSTR loadOrderGroup, DWORD* tagId, LPCWSTR dependencies,
                         LPCWSTR startName, LPCWSTR password);
BOOL DeleteService(SC_HANDLE service);
BOOL CloseServiceHandle(SC_HANDLE object);
BOOL ChangeServiceConfig2W(SC_HANDLE service, DWORD level, LPVOID information);
BOOL StartServiceW(SC_HANDLE service, DWORD argumentCount, LPCWSTR* arguments);
BOOL ControlService(SC_HANDLE service, DWORD control, SERVICE_STATUS* status);
BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_SERVICES_H_
