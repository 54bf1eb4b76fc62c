#include "access/opencl/opencl_2_1.h"

namespace oryn::skerv::opencl {

template class device<version::v2_1>;
template class context<version::v2_1>;
template class memory_object<version::v2_1>;
template class event<version::v2_1>;
template class program<version::v2_1>;
template class kernel<version::v2_1>;
template class basic_command_queue<version::v2_1, host_command_queue_kind>;
template class basic_command_queue<version::v2_1, device_command_queue_kind>;
template class transfer_buffer<version::v2_1, qv::operation::enqueue_read_buffer>;
template class transfer_buffer<version::v2_1, qv::operation::enqueue_write_buffer>;
template class copy_buffer<version::v2_1>;
template class fill_buffer_bytes<version::v2_1>;
template class nd_range_kernel<version::v2_1>;

} // namespace oryn::skerv::opencl
