kernel void add(global int* data, int amount) {
  data[get_global_id(0)] += amount;
}
