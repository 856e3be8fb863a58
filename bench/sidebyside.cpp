// Runs programs in turn, round after round, and prints what a run of each took as a table. Ratios
// are those of runs in the same round, so that a machine that is slow for a while slows both sides.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

constexpr char kUsage[] =
    "usage: sidebyside ROUNDS {LABEL COMMAND}...\n"
    "Runs each COMMAND, whose words are split at spaces, ROUNDS times and prints a table.\n";

struct Run {
  double wallTime;       // in microseconds
  double processorTime;  // the same, in user space and in the kernel
  double pageFaults;
};

struct Contender {
  std::string label;
  std::vector<std::string> words;  // of its command
  std::vector<char*> argv;         // the same for exec
  double peakMegabytes = 0;
  std::vector<Run> runs;  // one a round
};

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

double MedianOf(const Contender& contender, double Run::*value) {
  std::vector<double> values;
  for (const Run& run : contender.runs) values.push_back(run.*value);
  return Median(std::move(values));
}

double MedianRatio(const Contender& contender, const Contender& first, double Run::*value) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < contender.runs.size(); ++i) {
    ratios.push_back(contender.runs[i].*value / (first.runs[i].*value));
  }
  return Median(std::move(ratios));
}

double Microseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_usec);
}

// Ends the program when the run failed: its time would say nothing.
rusage Finish(const Contender& contender, pid_t process) {
  int status = 0;
  rusage usage = {};
  wait4(process, &status, 0, &usage);
  if (status != 0) {
    std::fprintf(stderr, "sidebyside: %s failed\n", contender.label.c_str());
    std::exit(EXIT_FAILURE);
  }
  return usage;
}

void Time(Contender& contender, const posix_spawn_file_actions_t* actions) {
  pid_t process = -1;
  const auto start = std::chrono::steady_clock::now();
  if (posix_spawnp(&process, contender.argv[0], actions, nullptr, contender.argv.data(), environ) !=
      0) {
    std::perror(contender.argv[0]);
    std::exit(EXIT_FAILURE);
  }
  const rusage usage = Finish(contender, process);
  const std::chrono::duration<double, std::micro> wallTime =
      std::chrono::steady_clock::now() - start;
  contender.runs.push_back({wallTime.count(),
                            Microseconds(usage.ru_utime) + Microseconds(usage.ru_stime),
                            static_cast<double>(usage.ru_minflt)});
}

// A run counts as at least as large as the process that started it. A spawned one counts with all
// of this program, a forked one with the few pages that a fork copies.
void MeasurePeak(Contender& contender) {
  const pid_t process = fork();
  if (process == 0) {
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
    dup2(nothing, STDOUT_FILENO);
    execvp(contender.argv[0], contender.argv.data());
    _exit(EXIT_FAILURE);
  }
  contender.peakMegabytes = static_cast<double>(Finish(contender, process).ru_maxrss) / 1024;
}

Contender ReadContender(const char* label, const char* command) {
  Contender contender;
  contender.label = label;
  std::istringstream words(command);
  contender.words.assign(std::istream_iterator<std::string>(words), {});
  for (std::string& word : contender.words) contender.argv.push_back(word.data());
  contender.argv.push_back(nullptr);
  return contender;
}

// Returns 0 when `word` is no positive number.
int ReadRounds(const std::string& word) {
  int rounds = 0;
  const char* const end = word.data() + word.size();
  const auto [parsed, error] = std::from_chars(word.data(), end, rounds);
  return error == std::errc() && parsed == end && rounds > 0 ? rounds : 0;
}

int RejectCommandLine(const char* reason) {
  std::fprintf(stderr, "sidebyside: %s\n%s", reason, kUsage);
  return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string first = argc > 1 ? argv[1] : "";
  if (first == "-h" || first == "--help") {
    std::fputs(kUsage, stdout);
    return EXIT_SUCCESS;
  }
  const int rounds = ReadRounds(first);
  if (rounds < 1) return RejectCommandLine("ROUNDS is a positive number");
  if (argc < 4 || argc % 2 != 0) return RejectCommandLine("a COMMAND is needed for each LABEL");
  std::vector<Contender> contenders;
  for (int i = 2; i < argc; i += 2) {
    contenders.push_back(ReadContender(argv[i], argv[i + 1]));
    if (contenders.back().words.empty()) return RejectCommandLine("a COMMAND is empty");
  }

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  for (Contender& contender : contenders) MeasurePeak(contender);  // and bring it into the cache
  std::vector<Contender*> order;
  order.reserve(contenders.size());
  for (Contender& contender : contenders) order.push_back(&contender);
  std::mt19937 random;  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same orders in every run
  for (auto round = rounds; round > 0; --round) {
    // What ran before has left its traces in the processor's caches.
    std::shuffle(order.begin(), order.end(), random);
    for (Contender* contender : order) Time(*contender, &actions);
  }
  posix_spawn_file_actions_destroy(&actions);

  std::printf("| medians of %d rounds | wall time | to the first | the first to it |", rounds);
  std::puts(" processor time | to the first | page faults | peak memory |");
  std::puts("|---|---|---|---|---|---|---|---|");
  for (const Contender& contender : contenders) {
    const double ratio = MedianRatio(contender, contenders.front(), &Run::wallTime);
    std::printf("| %s | %.2f ms | %.2f | %.2f | %.2f ms | %.2f | %.0f | %.1f MB |\n",
                contender.label.c_str(), MedianOf(contender, &Run::wallTime) / 1000, ratio,
                1 / ratio, MedianOf(contender, &Run::processorTime) / 1000,
                MedianRatio(contender, contenders.front(), &Run::processorTime),
                MedianOf(contender, &Run::pageFaults), contender.peakMegabytes);
  }
}
