#pragma once

// False when the scan is to stop. A pause that is seen here is final: the loop stays at this page,
// and nothing but the end of the process releases it.
bool MayGoOn();
