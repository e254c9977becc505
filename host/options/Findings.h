#ifndef SONOLET_HOST_OPTIONS_FINDINGS_H
#define SONOLET_HOST_OPTIONS_FINDINGS_H

#include <cstddef>
#include <map>
#include <string>

// What --validate finds in processes that other programs start, and that end as those please: the
// layer adds its lines to a file (SONOLET_FINDINGS), this one reads them.
//
// Without a file of the user's there is one in the folder for temporary files, for the owner alone,
// which goes with this object; its lines are told on standard error as they come. Threads: one.
// Errors: std::runtime_error from the constructor when no file can be made.
class Findings final {
public:
    // Names the file to the processes that start from now on. REQUIRES: no other thread runs yet.
    Findings();
    ~Findings();

    Findings(const Findings&) = delete;
    Findings& operator=(const Findings&) = delete;

    // Takes in what is new.
    void look();
    // Sums up on standard error; false when nothing was found.
    bool tellAll();

private:
    void take(const std::string& line);

    std::string path;
    bool isOwn = false;
    std::size_t read = 0;  // bytes
    // By rule and who broke it, as the layer calls them: "rule 108 plug-in".
    std::map<std::string, std::size_t> counts;
};

#endif
