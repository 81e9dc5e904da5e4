/*
 * VexaSqliteSDK: recovery of live and deleted records from SQLite databases taken from phones.
 *
 * Calling order
 *
 *   InitSqliteSDK(log_folder, work_folder)      once
 *   Scan(json, json_length, caller_context)     any number of times, one at a time
 *   UninitSqliteSDK()                           once, when no Scan is running
 *
 * Stop and Pause may be called from another thread at any time between the first and the last.
 *
 * Result codes
 *
 *   0     all               success; also a scan that was stopped, and scan_range_type 3
 *   1     InitSqliteSDK     an argument is null
 *   5     Scan              the parameter text is not valid JSON
 *   1000  Scan              an argument is null or empty, a required key is missing, null or of
 *                           the wrong type, or a number is out of its range
 *   1003  Scan              the scan could not be prepared; the log tells the step and its reason
 *   1004  Scan              the working copy of the source could not be opened
 *   1012  Scan              a file of the deleted scan could not be loaded: the source file, or the
 *                           kept copy of its write-ahead log. A sound source that has no log gives
 *                           this code too when only its log was to be searched
 *
 * Threads
 *
 *   A scan runs on the thread that calls Scan, from start to end; the library starts no thread. Two
 *   scans must not run at the same time, in this process or on the same files. Stop and Pause are
 *   safe beside a running Scan. InitSqliteSDK and UninitSqliteSDK must not run beside a Scan, a
 *   Stop or a Pause.
 *
 * Ownership
 *
 *   Every text and pointer that is handed in stays the caller's, is copied where it is needed, and
 *   may be released when the call returns. Nothing is handed out.
 *
 * Log
 *
 *   Lines are appended to "vexa_sqlite_sdk.log" in the log folder: UTC time with milliseconds,
 *   level ("info", "warning", "error"), the module name "VexaSqliteSDK", the message. Each line is
 *   handed to the system before the work goes on. A log file that can't be opened stops nothing.
 *
 * All texts are UTF-8. The header can be used from C and from C++.
 */
#ifndef VEXASQLITESDK_H_
#define VEXASQLITESDK_H_

#if defined(__GNUC__)
#define VEXASQLITESDK_API __attribute__((visibility("default")))
#else
#define VEXASQLITESDK_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Opens the log, remembers the configuration folder and makes the library ready to scan.
 *
 *   log_folder   folder of the log file, terminated by a 0 byte. It is created when it is missing.
 *   work_folder  folder that holds the configuration database "VexaConfiger.db", terminated by a 0
 *                byte. It is not looked at before the first Scan. That file is opened through
 *                SQLite and switched to write-ahead logging, so a host that wants to keep a shipped
 *                configuration untouched hands in a folder with a copy. One that other programs
 *                have open should not be handed in either.
 *
 * Returns 0, or 1 when an argument is null; then nothing is logged and nothing changes.
 *
 * Logs "VexaSqliteSDK version: 2, 1, 0, 33-D-5ebfc21f" at level info.
 *
 * A second call without UninitSqliteSDK between them changes both folders, and keeps a Stop or
 * Pause that was given before: each following scan still sees it.
 */
VEXASQLITESDK_API int InitSqliteSDK(const char* log_folder, const char* work_folder);

/*
 * Scans one source database and writes what it finds into a new result database.
 *
 *   json            the parameters, one JSON object as below. Need not be terminated.
 *   json_length     length of `json` in bytes, at least 1. Exactly that many are read.
 *   caller_context  any pointer but null. It is never used otherwise.
 *
 * Keys of the object; all are required but "system_version":
 *
 *   "system_type"      integer  the phone's system: 0 Android, 1 iOS. 2 is accepted, and names none
 *   "data_type"        integer  the application or store that the database belongs to:
 *                                 0 contact          4 whatsapp      8 reminder
 *                                 1 sms              5 safari        9 wechat
 *                                 2 callhistory      6 safariHis    10 wechatMoment
 *                                 3 note             7 calendar     11 kakaotalk
 *                               12 is accepted, and names none
 *   "system_version"   integer  version of the phone's system, as one number. Layouts that are
 *                               known only for later systems are left out. When absent, every known
 *                               layout is tried
 *   "scan_range_type"  integer  what to scan: 0 live records, then deleted ones; 1 live records;
 *                               2 deleted records (live rows that are found in the bytes are
 *                               written as well); 3 nothing: the result database is made, with its
 *                               empty tables
 *   "source_db_path"   text     the SQLite file to examine. Its write-ahead log is looked for
 *                               beside it, under the same name with "-wal" appended. The scan opens
 *                               a copy, but the file itself must be writable too
 *   "dest_db_path"     text     the result database. An old file of that name is removed first
 *   "temp_folder"      text     an existing folder for working copies of the source (its file name,
 *                               the same with "-wal", the same with "temp-wal"). Files of these
 *                               names are overwritten. The copies stay after the scan, and the host
 *                               removes them. Must be another folder than the source's, and hold no
 *                               "-wal" file of an earlier scan, which SQLite would take for the log
 *                               of the new copy
 *
 * Numbers may be written as reals or as true and false, texts as numbers; they are converted. A key
 * counts as missing when its value is null, [] or {}. An empty text is a valid path here and fails
 * later. Further keys have no effect.
 *
 * Returns a code of the table above. The result database holds what was found until then also
 * when the code is not 0, once it was made.
 *
 * Exceptions: one that the file system or a read behind the end of a damaged file raises leaves
 * this function as a C++ exception: std::filesystem::filesystem_error (a working copy can't be
 * made, an old file can't be removed), std::out_of_range (a read past the end of a file),
 * std::range_error (a text that is not valid in its encoding), std::bad_alloc. On the way the
 * result database is closed and the rows of the table at work are rolled back; a later Scan starts
 * afresh. A host in another language calls through a C++ function that catches them.
 *
 * Logs "Enter Scan" first and "End Scan" last, whatever is returned, at level info. After an
 * exception the line "End Scan" is missing. Between them stand the steps ("Enter %s", "End %s",
 * "%s Stop"), and one error line for each failure, which names the source file and mostly the line
 * that reports it, such as "[src/vexasqlitesdk], at line %d init ScanSqlite fail". Parameters
 * that are refused give "[src/vexasqlitesdk] invalid param.", "[src/vexasqlitesdk], at line %d fail
 * to parse param json or param incomplete, return %d." or "[src/vexasqlitesdk], at line %d scan
 * param content invalid".
 */
VEXASQLITESDK_API int Scan(const char* json, int json_length, void* caller_context);

/*
 * Ends a running scan: its loops leave at their next row, table or byte position, and Scan returns
 * in its normal way with what was found so far, mostly with 0.
 *
 * It lasts: every later Scan ends at its first test as well, until UninitSqliteSDK and a new
 * InitSqliteSDK. Has no effect before InitSqliteSDK and after UninitSqliteSDK.
 *
 * Logs "Enter Stop" and "End Stop" at level info.
 */
VEXASQLITESDK_API void Stop(void);

/*
 * Halts a running deleted scan at its next byte position, FOR GOOD: Scan doesn't return, its thread
 * uses a whole processor, and neither a later Stop nor anything else but the end of the process
 * releases it. There is no way to resume. A scan of live records is not halted; with
 * scan_range_type 0 the halt comes when the deleted scan begins. A Stop given before a scan has
 * halted comes first and ends it.
 *
 * Lasts as Stop does, and has no effect before InitSqliteSDK and after UninitSqliteSDK.
 *
 * Logs "Enter Pause" and "End Pause" at level info.
 */
VEXASQLITESDK_API void Pause(void);

/*
 * Forgets a Stop or Pause and closes the log. Must not be called while a Scan runs.
 *
 * Returns 0. May be called without InitSqliteSDK before it, and more than once.
 *
 * Logs "Enter UninitSqliteSDK" and "End UninitSqliteSDK" at level info.
 */
VEXASQLITESDK_API int UninitSqliteSDK(void);

#ifdef __cplusplus
}
#endif

#endif /* VEXASQLITESDK_H_ */
