#pragma once

#include <QtGlobal>

// True while process `pid` is alive and not a zombie (Linux: read from /proc).
bool procesoVivo(qint64 pid);
