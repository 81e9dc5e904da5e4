#pragma once

// How each room names itself in the log: the folder, not the file, so that an examiner's log
// stays comparable when files inside a room are split or renamed.
inline constexpr const char* kSourceCommon = "src/common/common";
inline constexpr const char* kSourceSqliteCommon = "src/common/sqlitecommon";
inline constexpr const char* kSourceSqliteConfig = "src/sqliteconfig";
inline constexpr const char* kSourceStorager = "src/storager";
inline constexpr const char* kSourceScanSqlite = "src/scansqlite";
inline constexpr const char* kSourceVexaSqliteSdk = "src/vexasqlitesdk";
