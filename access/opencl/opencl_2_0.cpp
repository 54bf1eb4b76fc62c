#include "access/opencl/opencl_2_0.h"

namespace oryn::skerv::opencl {

template class device<version::v2_0>;
template class context<version::v2_0>;
template class memory_object<version::v2_0>;
template class event<version::v2_0>;
template class program<version::v2_0>;
template class kernel<version::v2_0>;
template class basic_command_queue<version::v2_0, host_command_queue_kind>;
template class basic_command_queue<version::v2_0, device_command_queue_kind>;
template class transfer_buffer<version::v2_0, qv::operation::enqueue_read_buffer>;
template class transfer_buffer<version::v2_0, qv::operation::enqueue_write_buffer>;
template class copy_buffer<version::v2_0>;
template class fill_buffer_bytes<version::v2_0>;
template class nd_range_kernel<version::v2_0>;

} // namespace oryn::skerv::opencl
