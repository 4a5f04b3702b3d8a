// The least a C++ program can do: what starting a process costs by itself.
int main() { return 0; }
