// The written report of a net tester, node by node.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <string>

#include "base/text.h"
#include "learn/tester.h"

namespace ravelo {
namespace {

std::string state_label(const Node& node, std::size_t s) {
    const std::string& name = node.states[s].name;
    return name.empty() ? format("#%d", static_cast<int>(s)) : name;
}

int whole(double x) { return static_cast<int>(std::lround(x)); }

double percent(double part, double of) { return of > 0 ? 100.0 * part / of : 0.0; }

void confusion(std::string& out, const Node& node, const NodeTally& t) {
    const std::size_t m = static_cast<std::size_t>(t.states);
    const std::size_t width = 8 * m, used = 9 + 2;
    const std::string dots((width > used ? width - used : 0) / 2, '.');
    out += "\nConfusion:\n";
    out += format("  %sPredicted%s\n", dots.c_str(), dots.c_str());
    for (std::size_t s = 0; s < m; ++s) out += format("  %6.6s", state_label(node, s).c_str());
    out += "    Actual\n";
    for (std::size_t s = 0; s < m; ++s) out += "  ------";
    out += "    ------\n";
    for (std::size_t a = 0; a < m; ++a) {
        for (std::size_t p = 0; p < m; ++p) out += format("  %6d", whole(t.confusion[a * m + p]));
        out += format("    %s\n", state_label(node, a).c_str());
    }
}

void real_values(std::string& out, const NodeTally& t) {
    out += "\nTesting Real Value";
    if (t.real_count != t.total) out += format("  (%.4g cases)", t.real_count);
    out += ":\n";
    const double n = t.real_count;
    out += format("%sAbsolute error:", "  ") + format(" mean = %.4g", t.abs_sum / n) +
           format(" max = %.4g", t.abs_max) + format(" rms = %.4g\n", std::sqrt(t.abs_squares / n));
    out += format("%sRelative error:", "  ") + format(" mean = %.4g %%", 100.0 * t.rel_sum / n) +
           format(" max = %.4g %%\n", 100.0 * t.rel_max);
    out += format("%sError / std dev:", "  ") + format(" mean = %.4g", t.z_sum / n) +
           format(" max = %.4g\n", t.z_max);
    out += "Distribution within:  0-1 std dev";
    out += " 1-2 std dev";
    out += " 2-3 std dev";
    out += " >3 std dev\n";
    out += std::string(20, ' ');
    const double within1 = n - t.beyond1 - t.beyond2 - t.beyond3;
    for (double share : {within1, t.beyond1, t.beyond2, t.beyond3}) {
        std::string cell = format(" %-.3g %%", percent(share, n));
        cell.resize(std::max<std::size_t>(cell.size(), 12), ' ');
        out += cell;
    }
    while (!out.empty() && out.back() == ' ') out.pop_back();
    out += "\n";
}

void scores(std::string& out, const NodeTally& t) {
    out += format("\nError rate = %.4g%%\n", 100.0 * t.errors / t.total);
    out += "\nScoring Rule Results:\n";
    out += std::isinf(t.log_loss) ? std::string("  Logarithmic loss = INFINITY\n")
                                   : format("  Logarithmic loss = %.4g\n", t.log_loss / t.total);
    out += format("  Quadratic loss   = %.4g\n", t.quadratic_loss / t.total);
    out += format("  Spherical payoff = %.4g\n", t.spherical_payoff / t.total);
}

void calibration_line(std::string& out, const std::string& label, const std::vector<double>& hits,
                      const std::vector<double>& cases) {
    std::string line = format("  %-10.10s", label.c_str());
    for (std::size_t b = 0; b < kCalibrationBins.size(); ++b) {
        if (cases[b] <= 0) continue;
        const double high = b + 1 < kCalibrationBins.size() ? kCalibrationBins[b + 1] : 1.0;
        line += format(" %g-%g:", kCalibrationBins[b], high) + format(" %.3g", percent(hits[b], cases[b]));
    }
    out += line + "\n";
}

void calibration(std::string& out, const Node& node, const NodeTally& t) {
    const std::size_t bins = kCalibrationBins.size();
    out += "\nCalibration:\n";
    std::vector<double> all_hits(bins), all_cases(bins);
    for (std::size_t s = 0; s < static_cast<std::size_t>(t.states); ++s) {
        std::vector<double> hits(&t.hits[s * bins], &t.hits[s * bins] + bins);
        std::vector<double> cases(&t.cum[s * bins], &t.cum[s * bins] + bins);
        for (std::size_t b = 0; b < bins; ++b) all_hits[b] += hits[b], all_cases[b] += cases[b];
        calibration_line(out, state_label(node, s), hits, cases);
    }
    calibration_line(out, "Total", all_hits, all_cases);
}

void surprises(std::string& out, const Node& node, const NodeTally& t) {
    out += "\nTimes Surprised (percentage):\n";
    out += "               .................Predicted Probability....................\n";
    out += "  State        < 1%             < 10%             > 90%             > 99%\n";
    out += "  -----        ----             -----             -----             -----\n";
    std::vector<double> total(8);
    auto line = [&](const std::string& label, const double* counts) {
        std::string text = format("  %-10.10s", label.c_str());
        for (int k = 0; k < 4; ++k) {
            std::string cell = format(" %6.2f (%d/%d)", percent(counts[2 * k + 1], counts[2 * k]),
                                      whole(counts[2 * k + 1]), whole(counts[2 * k]));
            cell.resize(std::max<std::size_t>(cell.size(), 18), ' ');
            text += cell;
        }
        while (text.back() == ' ') text.pop_back();
        out += text + "\n";
    };
    for (std::size_t s = 0; s < static_cast<std::size_t>(t.states); ++s) {
        for (std::size_t k = 0; k < 8; ++k) total[k] += t.surprise[s * 8 + k];
        line(state_label(node, s), &t.surprise[s * 8]);
    }
    line("Total", total.data());
}

void two_state_quality(std::string& out, const NodeTally& t) {
    out += "\nQuality of Test:\n";
    out += "  Cutoff   Sensitivity   Specificity    Predictive   Predict-Neg\n";
    for (std::size_t k = 0; k < kQualityCutoffs.size(); ++k) {
        const double* q = &t.quality[k * 4];
        out += format("  %6.2f", kQualityCutoffs[k]) + format(" %13.4f", percent(q[0], q[0] + q[1]) / 100) +
               format(" %13.4f", percent(q[3], q[2] + q[3]) / 100) +
               format(" %13.4f", percent(q[0], q[0] + q[2]) / 100) +
               format(" %13.4f\n", percent(q[3], q[1] + q[3]) / 100);
    }
    // The likelihood ratios by which a positive or negative answer at each
    // cutoff moves the odds of the first state.
    out += "\nSensitivity of Test:\n";
    out += "         Cutoff  Positive LR    Negative LR\n";
    for (std::size_t k = 0; k < kQualityCutoffs.size(); ++k) {
        const double* q = &t.quality[k * 4];
        const double sensitivity = q[0] / (q[0] + q[1]), specificity = q[3] / (q[2] + q[3]);
        out += format(" %13.2f", kQualityCutoffs[k]) + format(" %13.7g", sensitivity / (1 - specificity)) +
               format(" %13.7g\n", (1 - sensitivity) / specificity);
    }
}

void node_report(std::string& out, const Node& node, const NodeTally& t) {
    out += format("\nFor %s:", node.name.c_str());
    if (!node.title.empty()) {
        std::string title = node.title.substr(0, 30);
        for (char& ch : title)
            if (ch == '_' || std::isspace(static_cast<unsigned char>(ch))) ch = ' ';
        out += format("       %.30s\n", title.c_str());
    }
    if (t.total == 0) {
        out += "\nNo applicable cases\n";
        return;
    }
    confusion(out, node, t);
    if (t.real_count > 0) real_values(out, t);
    scores(out, t);
    calibration(out, node, t);
    surprises(out, node, t);
    if (t.states == 2) two_state_quality(out, t);
}

}  // namespace

std::string test_report(const Tester& tester) {
    std::string out;
    for (std::size_t i = 0; i < tester.test_nodes.size(); ++i) node_report(out, *tester.test_nodes[i], tester.tallies[i]);
    return out;
}

}  // namespace ravelo
