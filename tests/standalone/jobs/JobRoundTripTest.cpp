// An analysis that was saved as a job gives the same results to the byte.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "apps/orvcox/CommandLine.h"

namespace orv {
namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

constexpr const char* kTrial = "time,status,age,dose,arm,site,sex,begin,end,m1,d1,y1,m2,d2,y2,w,entry\n";

// Cases with every kind of variable that the options ask for.
std::string Trial() {
  std::ostringstream text;
  text << kTrial;
  const char* const arms[] = {"drug, high", "drug \"low\"",
                              ("Plac\xC3\xA9"
                               "bo")};
  for (int k = 1; k <= 60; ++k) {
    const int time = 3 + (k * 37) % 90;
    text << time << ',' << (k % 4 != 0 ? "died" : "alive") << ',' << 40 + (k * 13) % 37 << ',' << (k * 7) % 11 << ",\"";
    for (const char c : std::string(arms[k % 3])) text << (c == '"' ? "\"\"" : std::string(1, c));
    text << "\"," << k % 2 + 1 << ',' << (k % 5 < 2 ? "f" : "m");
    text << ",2020-01-" << (k % 9 < 1 ? "10" : "0" + std::to_string(k % 9)) << ",2020-0" << 3 + k % 6 << "-15";
    text << ",1," << 1 + k % 28 << ",2019," << 2 + k % 10 << ',' << 1 + k % 27 << ",2020";
    text << ',' << 1 + k % 3 << ',' << k % 3 << '\n';
  }
  return text.str();
}

class JobRoundTrip : public ::testing::Test {
 protected:
  JobRoundTrip() : m_folder(fs::temp_directory_path() / ("orvcox-job-test-" + std::to_string(getpid()))) {
    fs::remove_all(m_folder);
    fs::create_directories(m_folder / "jobs");
    std::ofstream(m_folder / "trial.csv", std::ios::binary) << Trial();
    m_before = fs::current_path();
    fs::current_path(m_folder);
  }
  ~JobRoundTrip() override {
    fs::current_path(m_before);
    fs::remove_all(m_folder);
  }

  // What the command prints; the exit code and the messages go with it, so that a failure shows.
  static std::string Run(const Arguments& arguments, int exitCode = 0) {
    std::ostringstream out;
    std::ostringstream err;
    const int code = RunCommandLine(arguments, out, err);
    EXPECT_EQ(code, exitCode) << err.str();
    return out.str();
  }

  static std::string Content(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }

 private:
  fs::path m_folder;
  fs::path m_before;
};

const Arguments kUsual = {"--time", "time", "--status", "status", "--event", "died", "--censored", "alive"};
const Arguments kStatus = {"--status", "status", "--event", "died", "--censored", "alive"};

Arguments operator+(Arguments a, const Arguments& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

TEST_F(JobRoundTrip, TheSavedJobGivesTheSameBytes) {
  const Arguments predictors = {"--covariates", "age,dose", "--factors", "arm,site"};
  const Arguments cases[] = {
      kUsual,
      kUsual + Arguments{"--covariates", "age"} + Arguments{"--show", "all"},
      kUsual + predictors + Arguments{"--show", "all", "--ties", "efron", "--coding", "reference"},
      kUsual + predictors +
          Arguments{"--codes", "arm=\"drug, high\",drug \"low\"", "--reference", "arm=drug, high", "--show",
                    "design,estimates"},
      kUsual + Arguments{"--covariates", "#3", "--factors", "arm,site", "--effects", "#3*arm, arm(site)", "--coding",
                         "overparameterized", "--show", "estimates,type3,covariance"},
      Arguments{"--dates", "begin", "end"} + kStatus + Arguments{"--covariates", "age", "--entry", "entry"},
      Arguments{"--date-parts", "m1", "d1", "y1", "m2", "d2", "y2"} + kStatus + Arguments{"--covariates", "age"},
      Arguments{"--interval", "entry", "time"} + kStatus +
          Arguments{"--covariates", "age", "--show", "all", "--residuals", "score,martingale"},
      Arguments{"--interval", "entry", "time"} + kStatus +
          Arguments{"--covariates", "age", "--ties", "discrete", "--show", "residuals,survivor", "--ci", "none"},
      kUsual + Arguments{"--covariates", "age,dose", "--time-covariate", "late = age*(T_ >= 30)", "--time-covariate",
                         "slow=dose*log(T_)", "--effects", "dose, late, slow", "--show", "all"},
      kUsual + predictors + Arguments{"--strata", "sex", "--strata-codes", "m,f", "--show", "all"},
      kUsual + predictors +
          Arguments{"--weights", "w", "--where", "age > 41 and arm <> 'drug \"low\"'", "--show", "all"},
      kUsual + predictors + Arguments{"--robust", "--subject", "sex", "--confidence", "0.9", "--show", "all"},
      kUsual + predictors + Arguments{"--robust"},
      kUsual + predictors +
          Arguments{"--show", "contrast", "--contrast", "1 -1 0 0 0", "--contrast", "0, 0.5, 1e-3 -0 +2"},
      kUsual + predictors +
          Arguments{"--show", "survivor,hazard", "--pattern", "age=50.5, arm=\"drug, high\"", "--pattern",
                    "arm=\"drug \"\"low\"\"\", site=2", "--ci", "loglog", "--survivor-type", "breslow"},
      kUsual + Arguments{"--covariates", "age,dose", "--show", "hazard", "--ci", "none"},
      kUsual +
          Arguments{"--covariates", "age,dose", "--show", "survivor", "--survivor-type", "kaplan-meier", "--ci", "log"},
      kUsual + Arguments{"--covariates", "age,dose", "--show", "phtest,residuals", "--ph-transform", "km",
                         "--residuals", "lmax,displacement,dfbeta,stdxbeta,xbeta,scaledschoenfeld,schoenfeld"},
      kUsual + Arguments{"--covariates", "age,dose", "--start-values", "0.1,-0.2", "--fix", "2", "--show",
                         "history,estimates"},
      kUsual + Arguments{"--covariates", "age,dose", "--start-values", "1e-3,2", "--max-iterations", "30", "--converge",
                         "parameter", "--tolerance-exponent", "6", "--show", "history"},
      kUsual + predictors +
          Arguments{"--select", "stepwise", "--p-enter", "0.9", "--p-remove", "0.95", "--force", "1", "--show",
                    "steps,estimates"},
      kUsual + predictors + Arguments{"--select", "backward", "--p-remove", "0.999", "--show", "all"},
      kUsual + predictors + Arguments{"--select", "forward", "--p-enter", "0.99", "--show", "steps", "--quiet"},
      kUsual + Arguments{"--covariates", "age,dose,w", "--select", "best", "--force", "1", "--show", "steps"},
  };
  for (const Arguments& options : cases) {
    std::string shown;
    for (const std::string& option : options) shown += option + ' ';
    const std::string job = "jobs/saved.toml";
    fs::remove(job);
    const std::string results =
        Run(Arguments{"fit", "trial.csv"} + options + Arguments{"--format", "json", "--save-job", job});
    ASSERT_TRUE(fs::exists(job)) << shown;
    const std::string written = Content(job);
    EXPECT_EQ(Run({"run", job}), results) << shown << "\n" << written;
    EXPECT_NE(written.find("Table = \"../trial.csv\""), std::string::npos) << written;
  }
}

TEST_F(JobRoundTrip, StartValuesOutputsAndFormAreKept) {
  std::ofstream("start.csv") << "value\n0.01\n-0.02\n";
  Run({"convert", "start.csv", "start.orv"});
  Run(Arguments{"fit", "trial.csv"} + kUsual +
      Arguments{"--covariates", "age,dose", "--start-values", "start.orv", "--output", "a.json", "--output", "tables/",
                "--save-job", "jobs/saved.toml"});
  const std::string first = Content("a.json");
  const std::string table = Content("tables/01-summary.csv");
  fs::remove("a.json");
  fs::remove_all("tables");
  fs::create_directory("elsewhere");
  fs::current_path("elsewhere");
  EXPECT_EQ(Run({"run", "../jobs/saved.toml"}), "");
  EXPECT_EQ(Content("../a.json"), first);
  EXPECT_EQ(Content("../tables/01-summary.csv"), table);
}

TEST_F(JobRoundTrip, ARunThatIsRefusedOrFailsWritesNoJob) {
  Run(Arguments{"fit", "trial.csv"} + kUsual + Arguments{"--covariates", "agee", "--save-job", "j.toml"}, 2);
  Run(Arguments{"fit", "trial.csv"} + kUsual + Arguments{"--where", "status = 'alive'", "--save-job", "j.toml"}, 1);
  EXPECT_FALSE(fs::exists("j.toml"));
}

}  // namespace
}  // namespace orv
