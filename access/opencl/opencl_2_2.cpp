#include "access/opencl/opencl_2_2.h"

namespace oryn::skerv::opencl {

template class device<version::v2_2>;
template class context<version::v2_2>;
template class memory_object<version::v2_2>;
template class event<version::v2_2>;
template class program<version::v2_2>;
template class kernel<version::v2_2>;
template class basic_command_queue<version::v2_2, host_command_queue_kind>;
template class basic_command_queue<version::v2_2, device_command_queue_kind>;
template class transfer_buffer<version::v2_2, qv::operation::enqueue_read_buffer>;
template class transfer_buffer<version::v2_2, qv::operation::enqueue_write_buffer>;
template class copy_buffer<version::v2_2>;
template class fill_buffer_bytes<version::v2_2>;
template class nd_range_kernel<version::v2_2>;

} // namespace oryn::skerv::opencl
