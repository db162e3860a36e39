// SPDX-License-Identifier: MIT
#include <array>

#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

std::span<const Verb> verbs() {
  static constexpr std::array table = {
      Verb{"summary", "What was this request, where did its time go, what went wrong?",
           "  cttool summary request.ct                    one screen, fit for a ticket\n"
           "  cttool summary request.ct --full             whole lines, whole lists\n"
           "  cttool summary *.ct                          a line each\n"
           "  cttool summary request.ct --format json      all of it, for programs\n",
           define_summary},
      Verb{"top", "Which functions, classes or files took the time, the memory?",
           "  cttool top request.ct                        functions by their own time\n"
           "  cttool top request.ct --by total --limit 5\n"
           "  cttool top request.ct --of class --user      classes that scripts define\n"
           "  cttool top request.ct --callers preg_match   who called it\n"
           "  cttool top request.ct --under 'PDO::*'       what happened inside\n",
           define_top},
      Verb{"tree", "What called what, with times, down to what matters?",
           "  cttool tree request.ct                       what explains the time\n"
           "  cttool tree request.ct --under 'PDO::*'      what happened in these calls\n"
           "  cttool tree request.ct --only '/curl|pdo/'   these calls, and what led to them\n"
           "  cttool tree request.ct --no-builtin --min 1%\n",
           define_tree},
      Verb{"calls", "Which calls match, with their arguments and results?",
           "  cttool calls request.ct 'PDO::query'         each with arguments and result\n"
           "  cttool calls request.ct '*::*' --min 50ms    slow methods\n"
           "  cttool calls request.ct --threw              what threw an exception\n"
           "  cttool calls request.ct 'str_*' --arg 1=note --count\n"
           "  cttool calls request.ct --where 'own_memory > 1e6'\n",
           define_calls},
      Verb{"show", "Everything about one node: values, the way to it, what it called.",
           "  cttool show request.ct 42                    42 is an id that others print\n"
           "  cttool show request.ct 0                     the request itself\n",
           define_show},
      Verb{"response", "What did the client get, and who sent it?",
           "  cttool response request.ct                   status, headers and body\n"
           "  cttool response request.ct --body >page.html\n"
           "  cttool response request.ct --blame           who set and wrote what\n"
           "  cttool response request.ct --blame '<li>'    who wrote these bytes\n",
           define_response},
      Verb{"sql", "Anything else: a trace as tables of SQLite.",
           "  cttool sql request.ct .schema                the tables and their columns\n"
           "  cttool sql request.ct 'select count(*), sum(own_ns) from calls'\n"
           "  cttool sql request.ct \"select id, args ->> 0 from calls where name = 'f'\"\n"
           "  cttool sql request.ct --format csv 'select * from functions' >functions.csv\n",
           define_sql},
      Verb{"export", "Open it in the viewer that I know.",
           "  cttool export request.ct --to speedscope     on a terminal: into a file\n"
           "  cttool export request.ct --to chrome -o request.trace.json\n"
           "  cttool export request.ct --to callgrind --no-builtin\n"
           "  cttool export request.ct --to folded --weight memory >request.folded\n"
           "  cttool export request.ct --to jsonl | jq -c 'select(.own_ns > 1e6)'\n"
           "  cttool export request.ct --to csv --table functions >functions.csv\n"
           "  cttool export request.ct --to sqlite -o request.sqlite\n",
           define_export},
      Verb{"report", "One offline page with pictures, to look at and to hand on.",
           "  cttool report request.ct -o request.html     opens in any browser\n"
           "  cttool report request.ct -o - --max-size 10M | gzip >request.html.gz\n"
           "  cttool report request.ct -o part.html --under 'Note::html'\n"
           "  cttool report request.ct -o slow.html --min 1% --no-builtin\n",
           define_report},
      Verb{"check", "Is the file whole? Every defect, with its place and what it costs.",
           "  cttool check request.ct                      a line if it is whole\n"
           "  cttool check traces/*.ct --level lost        only where something is lost\n"
           "  cttool check request.ct --limit 0            every single defect\n"
           "  cttool check *.ct --format jsonl | jq -c 'select(.clean | not)'\n",
           define_check},
      Verb{"salvage", "Make a damaged or unfinished trace readable again.",
           "  cttool salvage broken.ct -o mended.ct        says what was kept, dropped, invented\n"
           "  cttool salvage broken.ct.gz -o - | cttool summary -\n"
           "  cttool salvage broken.ct -o mended.ct --format json >report.json\n"
           "  cttool salvage --data run.data --add-data run.add-data -o run.ct\n",
           define_salvage},
      Verb{"redact", "A copy without secrets, still a trace, to hand on.",
           "  cttool redact request.ct -o shared.ct        says what it masked, and where\n"
           "  cttool redact request.ct -o shared.ct --rules our.rules --value 'ACME Ltd'\n"
           "  cttool redact request.ct -o shared.ct --key our.key   equal masks in every trace\n"
           "  cttool redact request.ct -o shared.ct --strict        no text stays\n",
           define_redact},
  };
  return table;
}

}  // namespace CT::Tool
