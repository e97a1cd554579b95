#include "files/open_files.h"

#include <atomic>
#include <cstring>

#include "files/temporary_file.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#endif

namespace omb {

namespace fs = std::filesystem;

namespace {

using Character = fs::path::value_type;

// More files at a time than there are jobs, with names of usual lengths; others are not listed.
constexpr size_t kPlaces = 512, kLength = 1024;

struct Place {
  std::atomic<int> state = 0;  // 0 free, 1 being filled, 2 listed
  int file = -1;
  Character path[kLength] = {};
};
Place places[kPlaces];

}  // namespace

size_t ListOpenFile(const fs::path& path, std::FILE* file) {
  const fs::path whole = fs::absolute(path);
  if (whole.native().size() >= kLength) return kPlaces;
  for (size_t i = 0; i < kPlaces; ++i) {
    int free = 0;
    if (!places[i].state.compare_exchange_strong(free, 1)) continue;
    std::memcpy(places[i].path, whole.c_str(), (whole.native().size() + 1) * sizeof(Character));
    places[i].file = fileno(file);
    places[i].state = 2;
    return i;
  }
  return kPlaces;
}

void UnlistOpenFile(size_t place) {
  if (place < kPlaces) places[place].state = 0;
}

#ifdef _WIN32

std::FILE* OpenNew(const fs::path& path) {
  // This C runtime has no mode for new files only; the name is one that nobody else uses.
  return _wfopen(path.c_str(), L"w+b");
}

void SetPermissions(std::FILE*, fs::perms) {}

bool Synchronize(std::FILE* file) { return _commit(_fileno(file)) == 0; }

std::FILE* BinaryStandardOutput() {
  _setmode(_fileno(stdout), _O_BINARY);
  return stdout;
}

namespace {

BOOL WINAPI OnConsole(DWORD) {
  for (const Place& place : places) {
    if (place.state != 2) continue;
    _close(place.file);  // an open file cannot be removed
    DeleteFileW(place.path);
  }
  return FALSE;
}

}  // namespace

void RemoveTemporaryFilesOnSignals() { SetConsoleCtrlHandler(OnConsole, TRUE); }

#else

std::FILE* OpenNew(const fs::path& path) {
  const int file = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  return file < 0 ? nullptr : fdopen(file, "w+b");
}

void SetPermissions(std::FILE* file, fs::perms permissions) {
  mode_t mode = static_cast<mode_t>(permissions & fs::perms::all);
  // The mask can only be read by being changed: once, for all threads.
  static const mode_t mask = [] {
    const mode_t old = umask(0);
    umask(old);
    return old;
  }();
  if (permissions == fs::perms::unknown) mode = 0666 & ~mask;
  if (fchmod(fileno(file), mode) != 0) return;  // a file for its owner alone does no harm
}

bool Synchronize(std::FILE* file) { return fsync(fileno(file)) == 0; }

std::FILE* BinaryStandardOutput() { return stdout; }

namespace {

// Calls only what may be called here; places that are just being changed are left alone.
void OnSignal(int number) {
  for (const Place& place : places) {
    if (place.state == 2) unlink(place.path);
  }
  raise(number);  // now with the usual effect: a handler runs once
}

}  // namespace

void RemoveTemporaryFilesOnSignals() {
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESETHAND | SA_NODEFER;
  for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGXCPU, SIGXFSZ}) {
    struct sigaction old = {};
    // What the parent ignores stays ignored.
    if (sigaction(number, nullptr, &old) == 0 && old.sa_handler == SIG_IGN) continue;
    sigaction(number, &action, nullptr);
  }
}

#endif

}  // namespace omb
