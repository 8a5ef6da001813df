#include <nu/c/nu.h>
#include <stdio.h>

int main(void) {
  /* A bore of 20 mm, probed at eight places: x, y and z of each. */
  const double xyz[] = {10.004, 0.001,  0.0,    7.069,   7.074,  0.0,    0.002,  9.996,
                        0.0,    -7.075, 7.069,  0.0,     -9.997, -0.003, 0.0,    -7.066,
                        -7.071, 0.0,    -0.001, -10.003, 0.0,    7.073,  -7.068, 0.0};
  const int32_t criteria[] = {NU_CRITERION_LEAST_SQUARES, NU_CRITERION_MINIMUM_ZONE};
  const char* names[] = {"least squares:", "minimum zone: "};

  for (int i = 0; i < 2; ++i) {
    nu_feature bore = {.kind = NU_KIND_CIRCLE};
    nu_form form;
    if (nu_feature_fit(xyz, 8, 3, criteria[i], &bore, &form) != NU_STATUS_OK) {
      printf("%s\n", nu_error_message());
      return 1;
    }
    printf("%s diameter %.4f mm, roundness %.4f mm\n", names[i], 2.0 * bore.size[0],
           form.form);
  }
  return 0;
}
