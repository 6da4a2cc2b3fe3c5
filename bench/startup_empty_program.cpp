/// Nothing: what is timed is loading the libraries that it is linked with.
int main() { return 0; }
