#include "tests/sim/file_handle.h"

#include <windows.h>

#include <cerrno>

namespace sim {
namespace {

bool IsFileEnd(const OVERLAPPED* place) {
  return place != nullptr && place->Offset == 0xFFFFFFFF && place->OffsetHigh == 0xFFFFFFFF;
}

}  // namespace

bool FileHandle::LockRange() {
  if (stream_->node->rangeHolder != nullptr) {
    return false;
  }
  stream_->node->rangeHolder = stream_.get();
  return true;
}

bool FileHandle::UnlockRange() {
  if (stream_->node->rangeHolder != stream_.get()) {
    return false;
  }
  stream_->node->rangeHolder = nullptr;
  return true;
}

HANDLE OpenToAppend(const Call& call, const std::wstring& name, DWORD access, DWORD share,
                    DWORD disposition) {
  if (access != GENERIC_WRITE || disposition != OPEN_ALWAYS) {
    call->AddViolation("CreateFileW is not modelled for this use of " + Narrow(name));
    return call.Fail(INVALID_HANDLE_VALUE, ERROR_NOT_SUPPORTED);
  }
  const bool isThere = call->files.Exists(name);
  const Sharing sharing = {(share & FILE_SHARE_READ) == 0, (share & FILE_SHARE_WRITE) == 0};
  std::unique_ptr<Stream> stream;
  const int error = call->streams.OpenFile(name, {.write = true, .append = true}, sharing, &stream);
  if (error != 0) {
    return call.Fail(INVALID_HANDLE_VALUE,
                     error == ENOENT ? ERROR_PATH_NOT_FOUND : ERROR_ACCESS_DENIED);
  }
  Call::SetThreadError(isThere ? ERROR_ALREADY_EXISTS : NO_ERROR);
  return call.OpenHandle(std::make_shared<FileHandle>(call->streams, std::move(stream)), access);
}

BOOL WriteAtFileEnd(const Call& call, FileHandle& file, const std::string& bytes,
                    const OVERLAPPED* place, DWORD* written) {
  if (!IsFileEnd(place)) {
    call->AddViolation("WriteFile is modelled for the end of a file only");
    return call.Fail(FALSE, ERROR_NOT_SUPPORTED);
  }
  if (!file.Append(bytes)) {
    return call.Fail(FALSE, ERROR_DISK_FULL);
  }
  *written = static_cast<DWORD>(bytes.size());
  return TRUE;
}

}  // namespace sim
