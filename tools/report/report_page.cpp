#include "report/report_page.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <vector>

extern char** environ;

namespace inkdot::tools {
namespace {

namespace fs = std::filesystem;

// Debian's python, where python3-matplotlib installs, before one found
// first on PATH (a virtual environment rarely has matplotlib).
const char* python() { return access("/usr/bin/python3", X_OK) == 0 ? "/usr/bin/python3" : "python3"; }

// Runs a program with its standard output on standard error (or both
// silenced); its exit status, or -1 when it could not be started.
int run(const std::vector<std::string>& args, bool quiet) {
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (quiet) {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    } else {
        posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    }
    pid_t pid = 0;
    const int started = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (started != 0) return -1;
    int status = 0;
    while (waitpid(pid, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

std::string findReportScript() {
    std::error_code ec;
    const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    std::vector<fs::path> candidates;
    if (!ec) candidates.push_back(exe.parent_path().parent_path() / "share/inkdot/report_plots.py");
    candidates.push_back(fs::path(INKDOT_SOURCE_DIR) / "tools/report_plots.py");
    for (const fs::path& p : candidates)
        if (fs::is_regular_file(p, ec)) return p.string();
    return {};
}

bool writeReportPage(const std::string& dir, std::string& error) {
    const std::string script = findReportScript();
    if (script.empty()) {
        error = "the plotting script report_plots.py is not installed beside inkdot";
        return false;
    }
    if (run({python(), "-c", "import matplotlib, numpy"}, true) != 0) {
        error = "the report page needs python3 with matplotlib and numpy: install the Debian packages "
                "python3-matplotlib and python3-numpy (the measurements are in " + dir + ")";
        return false;
    }
    if (run({python(), script, dir}, false) != 0) {
        error = script + " could not make the page (the measurements are in " + dir + ")";
        return false;
    }
    return true;
}

}  // namespace inkdot::tools
