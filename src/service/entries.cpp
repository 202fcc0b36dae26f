#include <pthread.h>

#include <cstdlib>

#include "base/target.h"
#include "qor/service.h"
#include "service/environment.h"
#include "service/memory.h"
#include "service/spin_lock.h"

QOR_DATA QorMalloc i_malloc = std::malloc;
QOR_DATA QorCalloc i_calloc = std::calloc;
QOR_DATA QorRealloc i_realloc = std::realloc;
QOR_DATA QorFree i_free = std::free;

namespace service = qor::service;

QOR_ENTRY void* qor_serv_allocate(int size) { return service::allocate(size); }
QOR_ENTRY void qor_serv_deallocate(void* block) { service::deallocate(block); }
QOR_ENTRY void qor_serv_freebuffers(void) { service::free_buffers(); }
QOR_ENTRY void qor_free_extra_mem(void) { service::free_extra(); }
QOR_ENTRY void QOR_shrink_mem_slots(void) { service::shrink_slots(); }

QOR_ENTRY int QOR_read_env(void) { return service::read_environment(), 0; }
QOR_ENTRY unsigned long QOR_ThreadID(void) { return pthread_self(); }
QOR_ENTRY int qor_serv_in_serial(void) { return service::in_serial(); }
QOR_ENTRY int qor_serv_set_serial(void) { return service::set_serial("YES"); }
QOR_ENTRY int qor_serv_set_parallel(void) { return service::set_serial("NO"); }

QOR_ENTRY void qor_serv_lock(void) { service::memory_lock.lock(); }
QOR_ENTRY void qor_serv_unlock(void) { service::memory_lock.unlock(); }
QOR_ENTRY void qor_serv_dft_lock(void) { service::transform_lock.lock(); }
QOR_ENTRY void qor_serv_dft_unlock(void) { service::transform_lock.unlock(); }

QOR_ENTRY int dll_cpu_version(void) { return 4; }
