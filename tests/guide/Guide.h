#pragma once

#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "RVGit/RVGit.h"

/// What the guide's examples are given.
struct Given {
    std::shared_ptr<RVGitRepository> repository;
    std::string path;
    std::optional<RVError> error;
    std::string address;
    std::string destination;
};

/// The examples of one section of docs/usage.md or docs/security.md.
struct Example {
    const char* title;
    /// What is not run takes programs that are not there.
    bool isRun;
    void (*run)(Given& given);
};

extern const std::vector<Example> examples;

template <typename... Things>
void show(const Things&... things) {
    ((std::cout << things << " "), ...) << "\n";
}
