// SPDX-License-Identifier: MIT
//
// The views of an exported database: one for each question of the cookbook, and what a table of
// ctsql is that has no rows of its own. They need nothing that a plain SQLite has not.
#pragma once

namespace CT::Export {

inline constexpr const char* sqlite_views[] = {
    // Where did the time go?
    "create view hot_functions as select name, own_ns / 1e6 as own_ms, total_ns / 1e6 as total_ms,"
    " calls, own_memory, file, line from functions order by own_ns desc, id",
    // What was called most often?
    "create view most_called as select name, calls, own_ns / 1e6 as own_ms,"
    " total_ns / 1e6 as total_ms, file, line from functions order by calls desc, id",
    // Which calls were repeated with the same arguments?
    "create view repeated_calls as select calls, total_ns / 1e6 as total_ms, name, args, first"
    " from repeats order by calls desc, first",
    // Who called a function?
    "create view callers as select c.name,"
    " coalesce(p.name, 'include ' || i.path, n.kind) as caller, count(*) as calls,"
    " total(c.own_ns) / 1e6 as own_ms, total(c.total_ns) / 1e6 as total_ms"
    " from calls c left join calls p on p.id = c.parent left join includes i on i.id = c.parent"
    " left join nodes n on n.id = c.parent group by 1, 2 order by 1, calls desc, 2",
    // Which calls threw?
    "create view thrown_calls as select id, start_ns / 1e6 as start_ms, total_ns / 1e6 as total_ms,"
    " file, line, name, args, thrown from calls where outcome = 'threw' order by id",
    // Which calls never ended?
    "create view open_nodes as select id, start_ns / 1e6 as start_ms, kind, text, file, line"
    " from nodes where outcome = 'open' order by id",
    // Which errors and warnings came up, and where?
    "create view error_messages as select id, level, number, message, file, line from errors"
    " order by id",
    // What happened when?
    "create view timeline as select id, start_ns / 1e6 as start_ms, text from nodes"
    " where kind not in ('call', 'write', 'flush') order by id",
    // Which includes took longest?
    "create view slow_includes as select id, total_ns / 1e6 as total_ms, memory_delta, path"
    " from includes order by total_ns desc, id",
    // Where did memory grow?
    "create view memory_growth as select name, own_memory, calls, file, line from functions"
    " order by own_memory desc, id",
    // Which headers were sent?
    "create view header_operations as select h.id, h.operation, h.header,"
    " coalesce(p.name, 'include ' || i.path) as made_by, h.file, h.line from headers h"
    " left join calls p on p.id = h.parent left join includes i on i.id = h.parent order by h.id",
    // What was printed to the client?
    "create view output as select id, file, line, size, substr(body, 1, 40) as begins_with"
    " from writes order by id",
    // The nodes around a node: select * from ancestors where "of" = 42
    "create view ancestors as select a.id, a.depth, n.id as \"of\" from nodes n join nodes a"
    " on a.id < n.id and a.last >= n.id",
};

}  // namespace CT::Export
