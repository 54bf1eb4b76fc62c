#include "access/opencl/opencl_1_1.h"

namespace oryn::skerv::opencl {

template class device<version::v1_1>;
template class context<version::v1_1>;
template class memory_object<version::v1_1>;
template class event<version::v1_1>;
template class program<version::v1_1>;
template class kernel<version::v1_1>;
template class basic_command_queue<version::v1_1, command_queue_kind>;
template class transfer_buffer<version::v1_1, qv::operation::enqueue_read_buffer>;
template class transfer_buffer<version::v1_1, qv::operation::enqueue_write_buffer>;
template class copy_buffer<version::v1_1>;
template class nd_range_kernel<version::v1_1>;

} // namespace oryn::skerv::opencl
