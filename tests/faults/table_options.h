// Which cases of a table of faults are run, and what is told of them.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace vantrel::faults {

class TableOptions {
  public:
    /// --part N/M takes one share of the table, --only TEXT the cases whose name contains the text.
    TableOptions(int argc, char** argv) {
        for (int i = 1; i + 1 < argc; i += 2) {
            const std::string option = argv[i], value = argv[i + 1];
            if (option == "--only") only = value;
            if (option == "--part" && value.find('/') != std::string::npos) {
                part_ = std::atol(value.c_str());
                parts_ = std::max(1L, std::atol(value.c_str() + value.find('/') + 1));
            }
        }
    }

    /// Asked once for each case, in the order of the table.
    bool chooses(const std::string& name) {
        if (!only.empty()) return name.find(only) != std::string::npos;
        return number_++ % parts_ == part_;
    }

    std::string only;

  private:
    long part_ = 0, parts_ = 1, number_ = 0;
};

/// What is found, as it is found, and what comes of it all.
class TableReport {
  public:
    explicit TableReport(TableOptions options) : options_(std::move(options)) {}

    /// How the program ends.
    int report() const {
        std::cout << cases_ << " cases, " << defects_ << " defects\n";
        return defects_ == 0 && cases_ > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    }

  protected:
    void complain(const std::string& name, const std::string& defect) {
        ++defects_;
        std::cout << name << ":\n  " << defect << std::endl;
    }
    void tell(const std::vector<std::string>& said) const {
        if (options_.only.empty()) return;
        for (const std::string& line : said) std::cout << "    " << line << '\n';
    }

    TableOptions options_;
    long cases_ = 0, defects_ = 0;
};

}  // namespace vantrel::faults
