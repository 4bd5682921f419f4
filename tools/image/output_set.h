// A set of output files (a print's planes and preview, a report's tables)
// published as one unit, so that the directory holds the complete old set
// or the complete new one, never a mix:
//  - a lock on the set's name (DIR/.NAME.lock) makes runs that write the same
//    set take turns;
//  - every file is written, synced and closed in a private staging directory
//    inside DIR (DIR/.NAME.stage-XXXXXX), the same file system as the targets;
//  - publishing renames the staging directory to DIR/.NAME.ready-XXXXXX
//    (the point from which the set counts as written), then moves each file
//    into DIR; signals are held meanwhile;
//  - the next run with the same name, under the lock, finishes a ready set
//    that a killed run left half moved, and removes unfinished staging
//    directories and dead runs' temporary files; it does the same for other
//    names in the directory whose lock no run holds.
#pragma once

#include <string>
#include <vector>

namespace inkdot::tools {

class OutputSet {
public:
    OutputSet() = default;
    ~OutputSet();
    OutputSet(const OutputSet&) = delete;
    OutputSet& operator=(const OutputSet&) = delete;

    // Takes the lock on `name` in the existing directory `dir` (waiting for a
    // run that holds it), cleans up after dead runs and makes the staging
    // directory.
    bool open(const std::string& dir, const std::string& name, std::string& error);
    const std::string& stagingDir() const { return staging_; }
    // Where the set's file `fileName` is written; false when DIR/fileName
    // exists and is not a regular file (the set replaces regular files only).
    bool stage(const std::string& fileName, std::string& stagedPath, std::string& error);
    // Moves every file of the staging directory into place.
    bool publish(std::string& error);

private:
    std::string dir_, name_, staging_;
    int lockFd_ = -1;
    int ticket_ = -1;  // removal of the staging directory on a signal
};

// Finishes or removes what dead runs left for `name` in `dir`: ready sets are
// moved into place, staging directories removed. The caller holds the lock.
void recoverOutputSets(const std::string& dir, const std::string& name);
// The same for every other name in `dir` whose lock no run holds.
void recoverAbandonedSets(const std::string& dir, const std::string& name);

}  // namespace inkdot::tools
