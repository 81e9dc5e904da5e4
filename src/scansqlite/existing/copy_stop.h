#pragma once

// Whether the copying of live rows has to stop. Asked once for each row, and logged when it is so.
bool CopyIsStopped();
