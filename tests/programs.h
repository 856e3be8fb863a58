// Runs of the programs under test in the sandbox.

#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

constexpr char kOutput[] = "/odm/etc/camera/output";

// Starts the client, under the emulator if there is one, or another program, for 20 seconds at
// most.
inline pid_t Start(const Words& command) {
  Words words = {"timeout", "20"};
  for (const std::string& word : command) {
    if (*EMULATOR != '\0' && word == CLIENT) words.emplace_back(EMULATOR);
    words.push_back(word);
  }
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  const int flags = O_CREAT | O_TRUNC | O_APPEND | O_WRONLY;
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, kOutput, flags, 0600);
  posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
  pid_t process = -1;
  EXPECT_EQ(posix_spawnp(&process, argv[0], &actions, nullptr, argv.data(), environ), 0);
  posix_spawn_file_actions_destroy(&actions);
  return process;
}

// Waits for the program and returns all that it printed, and its exit status if that is not 0.
inline std::string Finish(pid_t process) {
  int status = 0;
  waitpid(process, &status, 0);
  if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
  std::ifstream file(kOutput);
  const std::string printed(std::istreambuf_iterator<char>(file), {});
  const int exitStatus = WEXITSTATUS(status);
  return exitStatus == 0 ? printed : printed + "exit status " + std::to_string(exitStatus) + "\n";
}
