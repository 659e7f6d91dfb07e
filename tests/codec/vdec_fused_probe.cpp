// SPDX-License-Identifier: MIT
// Compiled so that it must fuse: the check of the decoder's objects has to see it.
double FusedProbe(double a, double b, double c);
double FusedProbe(double a, double b, double c) {
    return a * b + c;
}
