// Loading a configuration of 40 MB, against reading and parsing the file by hand.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <rapidjson/document.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <ios>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "config/interface/configload.h"
#include "config/interface/configloadfactory.h"

namespace {

constexpr char kUsage[] =
    "usage: configload_benchmark FILE [BENCHMARK_OPTION]...\n"
    "Creates FILE, a configuration, measures how long it takes to load, and removes it.\n"
    "BENCHMARK_OPTION is one of Google Benchmark; \"FILE --help\" shows them.\n";

constexpr std::streamoff kFileSize = 40'000'000;
constexpr int kRepetitions = 25;

std::string path;  // of the configuration

// The settings of one stream of a camera; all streams differ in their numbers only.
void WriteStream(int index, std::mt19937& random, std::ostream& text) {
  const auto number = [&random](int range) {
    return static_cast<int>(random() % static_cast<unsigned>(range));
  };
  text << "  \"stream" << index << "\": {\n    \"name\": \"rear camera " << number(100)
       << "\",\n    \"enabled\": " << (number(2) == 0 ? "true" : "false")
       << ",\n    \"size\": {\"width\": " << number(8000) << ", \"height\": " << number(6000)
       << "},\n    \"orientation\": -" << number(360) << ",\n    \"note\": \"line " << number(50)
       << R"(\n\"golden\" unit, caf\u00e9 light",)"
       << "\n    \"noise\": [" << number(10) << '.' << number(1000) << "e-" << number(12) << ", -"
       << number(10) << '.' << number(1000) << "e+" << number(9) << ", " << number(100) << '.'
       << number(1000000) << "],\n    \"gains\": [0";
  for (int i = 0; i < 32; ++i) text << ", " << number(65536) - 32768;
  text << "],\n    "
       << R"("modes": [{"mode": "off"})";
  for (int i = 0; i < 4; ++i) {
    text << ",\n      "
         << R"({"mode": "mode )" << i << R"(", "rate": )" << number(240) << '.' << number(100)
         << R"(, "binning": )" << number(4) << '}';
  }
  text << "\n    ]\n  }";
}

void FailUnless(bool isGood) {
  if (isGood) return;
  std::fprintf(stderr, "configload_benchmark: %s was not written or not loaded\n", path.c_str());
  unlink(path.c_str());
  std::exit(EXIT_FAILURE);
}

void WriteConfiguration() {
  std::mt19937 random;  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same text in every run
  std::ofstream text(path);
  text << "{\n";
  for (int i = 0; text && text.tellp() < kFileSize; ++i) {
    if (i > 0) text << ",\n";
    WriteStream(i, random, text);
  }
  text << "\n}\n";
  FailUnless(text.flush().good());
}

void LoadWithCreateObject() {
  const std::unique_ptr<const ConfigLoad> loader(CreateObject({kConfigFileTypeJson, path}));
  FailUnless(loader != nullptr);
}

void ReadAndParse() {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat attributes = {};
  fstat(fd, &attributes);
  const auto size = static_cast<std::size_t>(attributes.st_size);
  const std::unique_ptr<char[]> text(new char[size + 1]);
  std::size_t used = 0;
  for (ssize_t count; (count = read(fd, text.get() + used, size - used)) > 0;) {
    used += static_cast<std::size_t>(count);
  }
  close(fd);
  text[used] = '\0';
  rapidjson::Document document;
  document.Parse(text.get());
  FailUnless(used == size && !document.HasParseError());
}

// The peak memory of a process that does nothing else.
double PeakMegabytes(void (*load)()) {
  const pid_t process = fork();
  if (process == 0) {
    load();
    _exit(EXIT_SUCCESS);
  }
  int status = 0;
  rusage usage = {};
  wait4(process, &status, 0, &usage);
  FailUnless(status == 0);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

void MeasureCreateObject(benchmark::State& state) {
  while (state.KeepRunning()) LoadWithCreateObject();
}

void MeasureReadAndParse(benchmark::State& state) {
  while (state.KeepRunning()) ReadAndParse();
}

void Repeat(benchmark::internal::Benchmark* measurement) {
  measurement->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(kRepetitions);
}

BENCHMARK(MeasureCreateObject)->Name("CreateObject")->Apply(Repeat);
BENCHMARK(MeasureReadAndParse)->Name("read and parse")->Apply(Repeat);

struct Way {
  const char* name;
  void (*load)();
  double peakMegabytes;
  double milliseconds;  // of the median repetition
  double cpuMilliseconds;
};

Way ways[] = {{"CreateObject", LoadWithCreateObject, 0, 0, 0},
              {"read and parse", ReadAndParse, 0, 0, 0}};

// Keeps the medians for the comparison.
class MedianReporter : public benchmark::ConsoleReporter {
 public:
  using ConsoleReporter::ConsoleReporter;

  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.aggregate_name != "median") continue;
      for (Way& way : ways) {
        if (run.run_name.function_name != way.name) continue;
        way.milliseconds = run.GetAdjustedRealTime();
        way.cpuMilliseconds = run.GetAdjustedCPUTime();
      }
    }
  }
};

void PrintComparison() {
  std::puts("\n| 40 MB, medians | wall time | processor time | peak memory |\n|---|---|---|---|");
  for (const Way& way : ways) {
    std::printf("| %s | %.0f ms | %.0f ms | %.0f MB |\n", way.name, way.milliseconds,
                way.cpuMilliseconds, way.peakMegabytes);
  }
  std::printf("| the first to the second | %.2f | %.2f | %.2f |\n",
              ways[0].milliseconds / ways[1].milliseconds,
              ways[0].cpuMilliseconds / ways[1].cpuMilliseconds,
              ways[0].peakMegabytes / ways[1].peakMegabytes);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string first = argc > 1 ? argv[1] : "";
  if (first == "-h" || first == "--help") {
    std::fputs(kUsage, stdout);
    return EXIT_SUCCESS;
  }
  if (first.empty() || first[0] == '-') {
    std::fprintf(stderr, "configload_benchmark: FILE comes first\n%s", kUsage);
    return EXIT_FAILURE;
  }
  benchmark::Initialize(&argc, argv);  // takes out of `argv` the options that it knows
  if (argc > 2) {
    std::fprintf(stderr, "configload_benchmark: no such option: %s\n%s", argv[2], kUsage);
    return EXIT_FAILURE;
  }

  path = first;
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0) {
    std::perror(path.c_str());
    return EXIT_FAILURE;
  }
  close(fd);
  WriteConfiguration();
  // Before anything has been loaded in this process, which a child would count as its own.
  for (Way& way : ways) way.peakMegabytes = PeakMegabytes(way.load);
  MedianReporter reporter(benchmark::ConsoleReporter::OO_None);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  PrintComparison();
  unlink(path.c_str());
}
