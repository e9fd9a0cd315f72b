/* launcher_nothing: the least that a process can cost. */
int main(void)
{
    return 0;
}
