// SPDX-License-Identifier: MIT
//
// Calls in which PHP waits for something outside of it: databases, files, the network, other programs.
import { Kind, type Trace } from './trace';

export const waitNames = { sql: 'Database', file: 'Files', network: 'Network', process: 'Processes' } as const;
export type Wait = keyof typeof waitNames;

// By lower-case name; PHP's own functions only.
const patterns: [Wait, RegExp][] = [
  [
    'file',
    /^(file(_(get|put)_contents|_exists|atime|ctime|mtime|group|inode|owner|perms|size|type)?|f(open|close|read|write|puts|putcsv|getcsv|gets|getc|passthru|flush|lock|truncate|sync|datasync|eof|seek|stat)|readfile|opendir|readdir|closedir|scandir|glob|dir|is_(file|dir|link|readable|writable|writeable|executable)|l?stat|unlink|rename|mkdir|rmdir|copy|touch|chmod|chown|chgrp|symlink|link|readlink|realpath|tempnam|tmpfile|flock|clearstatcache|disk_(free|total)_space|parse_ini_file|move_uploaded_file|gz(open|read|write|file|gets|close)|readgzfile|simplexml_load_file|hash_file|md5_file|sha1_file|getimagesize|exif_read_data|stream_get_contents|stream_copy_to_stream|finfo_file|mime_content_type|session_(start|write_close|commit)|highlight_file|opcache_compile_file|dba_\w+)$/,
  ],
  [
    'file',
    /^(splfileobject|splfileinfo|directoryiterator|filesystemiterator|recursivedirectoryiterator|globiterator|ziparchive|finfo|phar|phardata|xmlreader)::/,
  ],
  [
    'network',
    /^(curl_(multi_)?(exec|select)|f?sockopen|pfsockopen|stream_socket_\w+|stream_select|socket_\w+|gethostby(name|addr|namel)|dns_\w+|checkdnsrr|getmxrr|get_headers|mail|imap_\w+|ldap_\w+|ftp_\w+|ssh2_\w+|soapclient::\w+|memcached?(::\w+|_\w+)|redis(cluster|array|sentinel)?::\w+|mongodb\\.*|amqp\w*::\w+|gearmanclient::\w+|snmp\w*)$/,
  ],
  [
    'process',
    /^(exec|shell_exec|system|passthru|proc_(open|close)|popen|pclose|pcntl_(wait|waitpid)|sleep|usleep|time_nanosleep|time_sleep_until|sem_acquire|msg_receive)$/,
  ],
];
const databases =
  /^(pdo(statement)?::(query|exec|execute|prepare|__construct|fetch\w*|commit|begintransaction|rollback)|mysqli(_stmt|_result)?::(__construct|query|real_query|multi_query|execute_query|execute|prepare|real_connect|fetch_\w+|commit|begin_transaction)|mysqli_(connect|real_connect|query|real_query|multi_query|execute_query|prepare|stmt_execute|execute|stmt_prepare|fetch_\w+|commit|begin_transaction)|pg_(p?connect|query|query_params|prepare|execute|send_\w+|get_result|fetch_\w+)|sqlite3(stmt|result)?::(__construct|open|query|exec|querysingle|prepare|execute|fetcharray)|oci_(connect|execute|fetch\w*)|sqlsrv_(connect|query|execute|fetch\w*)|odbc_(connect|exec|execute))$/;

// Of each function; null where it does not wait.
export function waitsOf(trace: Trace): (Wait | null)[] {
  const { name, builtin } = trace.functions;
  return name.map((full, number) => {
    if (!builtin[number]) return null;
    const small = full.toLowerCase();
    if (databases.test(small)) return 'sql';
    return patterns.find(([, pattern]) => pattern.test(small))?.[0] ?? null;
  });
}

export interface Waiting {
  index: number;
  wait: Wait;
}

// Calls that wait, in the order in which they began.
export function waitingCalls(trace: Trace): Waiting[] {
  const waits = waitsOf(trace);
  const list: Waiting[] = [];
  for (let i = 0; i < trace.count; ++i) {
    const wait = trace.kind[i] === Kind.call ? waits[trace.name[i]] : null;
    if (wait) list.push({ index: i, wait });
  }
  return list;
}
