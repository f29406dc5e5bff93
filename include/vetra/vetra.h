// vetra.h - the whole public surface of the vetra library.
#ifndef VETRA_H
#define VETRA_H

#include "vetra/block_buffer.h"
#include "vetra/cpu_usage.h"
#include "vetra/host.h"
#include "vetra/ip_info.h"
#include "vetra/perf_counter.h"
#include "vetra/vetra_export.h"
#include "vetra/vtmem.h"
#include "vetra/xml_parser.h"

#endif // VETRA_H
