#include "infer/table_walk.h"

#include <algorithm>

#include "base/failure.h"

namespace ravelo {

namespace {

// The stride in a table over 'target' of each of the members (0 when outside).
void strides_in(const Graph& g, const std::vector<int>& members, const std::vector<int>& target, std::size_t* stride) {
    std::fill(stride, stride + members.size(), std::size_t{0});
    std::size_t step = 1;
    for (std::size_t j = target.size(); j-- > 0;) {
        for (std::size_t i = 0; i < members.size(); ++i)
            if (members[i] == target[j]) {
                stride[i] = step;
                break;
            }
        step *= static_cast<std::size_t>(g.states(target[j]));
    }
}

// Members of a table this small keep their strides on the stack: walks are
// made for every message of every update, and a thread-local buffer in a
// shared library costs a lookup on each use.
constexpr std::size_t kStackMembers = 32;

}  // namespace

TableWalk make_walk(const Graph& g, const std::vector<int>& members, const std::vector<int>& target,
                    const int* fixed, const std::vector<int>& second, const std::vector<int>& third) {
    TableWalk w;
    const std::size_t k = members.size();
    std::size_t on_stack[3 * kStackMembers];
    std::vector<std::size_t> on_heap;
    std::size_t* strides = on_stack;
    if (k > kStackMembers) {
        on_heap.resize(3 * k);
        strides = on_heap.data();
    }
    std::size_t* const target_stride = strides;
    std::size_t* const second_stride = strides + k;
    std::size_t* const third_stride = strides + 2 * k;
    strides_in(g, members, target, target_stride);
    strides_in(g, members, second, second_stride);
    strides_in(g, members, third, third_stride);
    WalkDims inward;  // innermost first while building
    std::size_t stride = 1;
    for (std::size_t i = k; i-- > 0;) {
        const std::size_t n = static_cast<std::size_t>(g.states(members[i]));
        const int s = fixed ? fixed[members[i]] : -1;
        if (n == 0) w.empty = true;
        if (s >= 0) {
            w.start += stride * static_cast<std::size_t>(s);
            w.target_start += target_stride[i] * static_cast<std::size_t>(s);
            w.second_start += second_stride[i] * static_cast<std::size_t>(s);
            w.third_start += third_stride[i] * static_cast<std::size_t>(s);
        } else if (n > 1) {
            WalkDim* inner = inward.count ? &inward.at[inward.count - 1] : nullptr;
            if (inner && inner->step * inner->count == stride &&
                inner->target_step * inner->count == target_stride[i] &&
                inner->second_step * inner->count == second_stride[i] &&
                inner->third_step * inner->count == third_stride[i])
                inner->count *= n;
            else {
                RAVELO_ASSERT(inward.count < kMaxWalkDims);
                inward.at[inward.count++] = {n, stride, target_stride[i], second_stride[i], third_stride[i]};
            }
        }
        stride *= n;
    }
    while (inward.count < 2) inward.at[inward.count++] = {1, 0, 0, 0, 0};
    for (std::size_t i = 0; i < inward.count; ++i) w.dims.at[i] = inward.at[inward.count - 1 - i];
    w.dims.count = inward.count;
    return w;
}

namespace {

// Calls block(entry, target, second, third) at the start of each middle x
// inner block, counting the outer dimensions like an odometer.
template <class Block>
void for_each_block3(const TableWalk& w, Block&& block) {
    if (w.empty) return;
    const std::size_t outer = w.dims.size() - 2;
    std::size_t count[kMaxWalkDims];  // only the outer ones are used: cleared alone, as most walks are tiny
    std::fill(count, count + outer, std::size_t{0});
    std::size_t e = w.start, t = w.target_start, u = w.second_start, x = w.third_start;
    for (;;) {
        block(e, t, u, x);
        std::size_t i = outer;
        for (;;) {
            if (i == 0) return;
            --i;
            const WalkDim& d = w.dims[i];
            if (++count[i] < d.count) {
                e += d.step;
                t += d.target_step;
                u += d.second_step;
                x += d.third_step;
                break;
            }
            e -= d.step * (d.count - 1);
            t -= d.target_step * (d.count - 1);
            u -= d.second_step * (d.count - 1);
            x -= d.third_step * (d.count - 1);
            count[i] = 0;
        }
    }
}

template <class Block>
void for_each_block(const TableWalk& w, Block&& block) {
    for_each_block3(w, [&](std::size_t e, std::size_t t, std::size_t, std::size_t) { block(e, t); });
}

// Inner runs that spread over a target are taken this many entries at a time
// across the middle steps, so that the target entries stay in cache while
// successive middle steps add to (or read) them.  Shorter tiles interleave
// more streams than the hardware follows well.
constexpr std::size_t kTile = 1 << 16;

const WalkDim& middle_dim(const TableWalk& w) { return w.dims[w.dims.size() - 2]; }
const WalkDim& inner_dim(const TableWalk& w) { return w.dims.back(); }

// Sum of n floats in double, in four independent lanes so it vectorises.
inline double block_sum(const float* t, std::size_t n) {
    double a = 0, b = 0, c = 0, d = 0;
    std::size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        a += t[i];
        b += t[i + 1];
        c += t[i + 2];
        d += t[i + 3];
    }
    for (; i < n; ++i) a += t[i];
    return (a + b) + (c + d);
}

// Short inner runs summed with their length known at compile time.
template <std::size_t N>
void sum_short_runs(const TableWalk& w, const float* table, double* out) {
    const WalkDim m = middle_dim(w);
    for_each_block(w, [&](std::size_t e, std::size_t t) {
        for (std::size_t j = 0; j < m.count; ++j, e += m.step, t += m.target_step) {
            double s = 0.0;
            for (std::size_t i = 0; i < N; ++i) s += table[e + i];
            out[t] += s;
        }
    });
}

// In place, source is t itself, which the compiler must know to vectorise.
template <bool InPlace>
void multiply_entries(const TableWalk& w, float* t, const float* source, const float* factor) {
    const WalkDim m = middle_dim(w), in = inner_dim(w);
    if (in.step == 1 && in.target_step == 1) {
        for_each_block(w, [&](std::size_t e, std::size_t f) {
            for (std::size_t c = 0; c < in.count; c += kTile) {
                const std::size_t n = std::min(kTile, in.count - c);
                for (std::size_t j = 0, ej = e + c, fj = f + c; j < m.count; ++j, ej += m.step, fj += m.target_step) {
                    float* out = t + ej;
                    const float* src = InPlace ? out : source + ej;
                    const float* fac = factor + fj;
                    for (std::size_t i = 0; i < n; ++i) out[i] = src[i] * fac[i];
                }
            }
        });
        return;
    }
    for_each_block(w, [&](std::size_t e, std::size_t f) {
        for (std::size_t j = 0; j < m.count; ++j, e += m.step, f += m.target_step) {
            float* out = t + e;
            const float* src = InPlace ? out : source + e;
            const float* fac = factor + f;
            if (in.step == 1 && in.target_step == 0) {
                const float x = *fac;
                for (std::size_t i = 0; i < in.count; ++i) out[i] = src[i] * x;
            } else {
                for (std::size_t i = 0; i < in.count; ++i)
                    out[i * in.step] = src[i * in.step] * fac[i * in.target_step];
            }
        }
    });
}

// Calls run(offset, count, step) for each middle step's inner run.
template <class Run>
void for_each_run(const TableWalk& w, Run&& run) {
    const WalkDim m = middle_dim(w), in = inner_dim(w);
    for_each_block(w, [&](std::size_t e, std::size_t) {
        for (std::size_t j = 0; j < m.count; ++j, e += m.step) run(e, in.count, in.step);
    });
}

// One contiguous run of the fused sweep; FS and SS are the run's steps in
// the factor and in the sums (0 or 1).
template <bool InPlace, int FS, int SS>
inline void multiply_sum_run(float* out, const float* source, const float* fac, double* sum, std::size_t n) {
    const float* src = InPlace ? out : source;
    if constexpr (SS == 0) {
        double a = 0, b = 0, c = 0, d = 0;
        std::size_t i = 0;
        for (; i + 4 <= n; i += 4) {
            const float v0 = src[i] * fac[FS * i], v1 = src[i + 1] * fac[FS * (i + 1)];
            const float v2 = src[i + 2] * fac[FS * (i + 2)], v3 = src[i + 3] * fac[FS * (i + 3)];
            out[i] = v0;
            out[i + 1] = v1;
            out[i + 2] = v2;
            out[i + 3] = v3;
            a += v0;
            b += v1;
            c += v2;
            d += v3;
        }
        for (; i < n; ++i) {
            const float v = src[i] * fac[FS * i];
            out[i] = v;
            a += v;
        }
        *sum += (a + b) + (c + d);
    } else {
        for (std::size_t i = 0; i < n; ++i) {
            const float v = src[i] * fac[FS * i];
            out[i] = v;
            sum[i] += v;
        }
    }
}

template <bool InPlace, int FS, int SS>
void multiply_sum_entries(const TableWalk& w, float* t, const float* source, const float* factor, double* out) {
    const WalkDim m = middle_dim(w), in = inner_dim(w);
    const std::size_t tile = FS || SS ? kTile : in.count;
    for_each_block3(w, [&](std::size_t e, std::size_t f, std::size_t u, std::size_t) {
        for (std::size_t c = 0; c < in.count; c += tile) {
            const std::size_t n = std::min(tile, in.count - c);
            std::size_t ej = e + c, fj = f + FS * c, uj = u + SS * c;
            for (std::size_t j = 0; j < m.count; ++j, ej += m.step, fj += m.target_step, uj += m.second_step)
                multiply_sum_run<InPlace, FS, SS>(t + ej, InPlace ? nullptr : source + ej, factor + fj, out + uj, n);
        }
    });
}

template <bool InPlace>
void multiply_sum_dispatch(const TableWalk& w, float* t, const float* source, const float* factor, double* out) {
    const WalkDim in = inner_dim(w);
    const int fs = static_cast<int>(in.target_step), ss = static_cast<int>(in.second_step);
    if (in.step == 1 && fs <= 1 && ss <= 1) {
        if (fs == 0 && ss == 0) return multiply_sum_entries<InPlace, 0, 0>(w, t, source, factor, out);
        if (fs == 1 && ss == 0) return multiply_sum_entries<InPlace, 1, 0>(w, t, source, factor, out);
        if (fs == 0 && ss == 1) return multiply_sum_entries<InPlace, 0, 1>(w, t, source, factor, out);
        return multiply_sum_entries<InPlace, 1, 1>(w, t, source, factor, out);
    }
    const WalkDim m = middle_dim(w);
    for_each_block3(w, [&](std::size_t e, std::size_t f, std::size_t u, std::size_t) {
        for (std::size_t j = 0; j < m.count; ++j, e += m.step, f += m.target_step, u += m.second_step)
            for (std::size_t i = 0; i < in.count; ++i) {
                const std::size_t x = e + i * in.step;
                const float v = (InPlace ? t[x] : source[x]) * factor[f + i * in.target_step];
                t[x] = v;
                out[u + i * in.second_step] += v;
            }
    });
}

// One contiguous run of a fused sweep over a third target as well: with
// Factor2 the entries are also multiplied by a second factor over it, with
// Sum2 they are also summed onto it.  FS, SS and XS are the run's steps in
// the factor, the sums and the third target (0 or 1).
template <bool InPlace, bool Factor2, bool Sum2, int FS, int SS, int XS>
inline void fused_run(float* out, const float* source, const float* f, const float* g, double* sum, double* sum2,
                      std::size_t n) {
    const float* src = InPlace ? out : source;
    double a = 0, b = 0;
    for (std::size_t i = 0; i < n; ++i) {
        float v = src[i] * f[FS * i];
        if constexpr (Factor2) v *= g[XS * i];
        out[i] = v;
        if constexpr (SS == 0) a += v;
        else sum[i] += v;
        if constexpr (Sum2) {
            if constexpr (XS == 0) b += v;
            else sum2[i] += v;
        }
    }
    if constexpr (SS == 0) *sum += a;
    if constexpr (Sum2 && XS == 0) *sum2 += b;
}

struct FusedTables {
    float* t;
    const float* source;
    const float* factor;
    const float* factor2;
    double* out;
    double* out2;
};

template <bool InPlace, bool Factor2, bool Sum2, int FS, int SS, int XS>
void fused_entries(const TableWalk& w, const FusedTables& z) {
    const WalkDim m = middle_dim(w), in = inner_dim(w);
    const std::size_t tile = FS || SS || XS ? kTile : in.count;
    for_each_block3(w, [&](std::size_t e, std::size_t f, std::size_t u, std::size_t x) {
        for (std::size_t c = 0; c < in.count; c += tile) {
            const std::size_t n = std::min(tile, in.count - c);
            std::size_t ej = e + c, fj = f + FS * c, uj = u + SS * c, xj = x + XS * c;
            for (std::size_t j = 0; j < m.count;
                 ++j, ej += m.step, fj += m.target_step, uj += m.second_step, xj += m.third_step)
                fused_run<InPlace, Factor2, Sum2, FS, SS, XS>(z.t + ej, InPlace ? nullptr : z.source + ej,
                                                              z.factor + fj, Factor2 ? z.factor2 + xj : nullptr,
                                                              z.out + uj, Sum2 ? z.out2 + xj : nullptr, n);
        }
    });
}

template <bool InPlace, bool Factor2, bool Sum2, int FS, int SS>
void fused_by_third_step(const TableWalk& w, int xs, const FusedTables& z) {
    if (xs == 0) return fused_entries<InPlace, Factor2, Sum2, FS, SS, 0>(w, z);
    return fused_entries<InPlace, Factor2, Sum2, FS, SS, 1>(w, z);
}

template <bool InPlace, bool Factor2, bool Sum2>
void fused_dispatch(const TableWalk& w, const FusedTables& z) {
    const WalkDim in = inner_dim(w);
    const int fs = static_cast<int>(in.target_step), ss = static_cast<int>(in.second_step);
    const int xs = static_cast<int>(in.third_step);
    if (in.step == 1 && fs <= 1 && ss <= 1 && xs <= 1) {
        if (fs == 0 && ss == 0) return fused_by_third_step<InPlace, Factor2, Sum2, 0, 0>(w, xs, z);
        if (fs == 0) return fused_by_third_step<InPlace, Factor2, Sum2, 0, 1>(w, xs, z);
        if (ss == 0) return fused_by_third_step<InPlace, Factor2, Sum2, 1, 0>(w, xs, z);
        return fused_by_third_step<InPlace, Factor2, Sum2, 1, 1>(w, xs, z);
    }
    const WalkDim m = middle_dim(w);
    for_each_block3(w, [&](std::size_t e, std::size_t f, std::size_t u, std::size_t x) {
        for (std::size_t j = 0; j < m.count;
             ++j, e += m.step, f += m.target_step, u += m.second_step, x += m.third_step)
            for (std::size_t i = 0; i < in.count; ++i) {
                const std::size_t at = e + i * in.step, third = x + i * in.third_step;
                float v = (InPlace ? z.t[at] : z.source[at]) * z.factor[f + i * in.target_step];
                if constexpr (Factor2) v *= z.factor2[third];
                z.t[at] = v;
                z.out[u + i * in.second_step] += v;
                if constexpr (Sum2) z.out2[third] += v;
            }
    });
}

template <bool Factor2, bool Sum2>
void fused_sweep(const TableWalk& w, const FusedTables& z) {
    if (z.source == z.t) fused_dispatch<true, Factor2, Sum2>(w, z);
    else fused_dispatch<false, Factor2, Sum2>(w, z);
}

}  // namespace

void walk_multiply_sum2(const TableWalk& w, float* t, const float* source, const float* factor, double* out,
                        double* out2) {
    fused_sweep<false, true>(w, {t, source, factor, nullptr, out, out2});
}

void walk_multiply2_sum(const TableWalk& w, float* t, const float* source, const float* factor, const float* factor2,
                        double* out) {
    fused_sweep<true, false>(w, {t, source, factor, factor2, out, nullptr});
}

void walk_multiply_sum(const TableWalk& w, float* t, const float* source, const float* factor, double* out) {
    if (source == t) multiply_sum_dispatch<true>(w, t, nullptr, factor, out);
    else multiply_sum_dispatch<false>(w, t, source, factor, out);
}

void walk_sum(const TableWalk& w, const float* table, double* out) {
    const WalkDim m = middle_dim(w), in = inner_dim(w);
    if (in.step == 1 && in.target_step == 0) {
        switch (in.count) {
            case 1: return sum_short_runs<1>(w, table, out);
            case 2: return sum_short_runs<2>(w, table, out);
            case 3: return sum_short_runs<3>(w, table, out);
            case 4: return sum_short_runs<4>(w, table, out);
            default: break;
        }
        for_each_block(w, [&](std::size_t e, std::size_t t) {
            for (std::size_t j = 0; j < m.count; ++j, e += m.step, t += m.target_step)
                out[t] += block_sum(table + e, in.count);
        });
    } else if (in.step == 1 && in.target_step == 1) {
        for_each_block(w, [&](std::size_t e, std::size_t t) {
            for (std::size_t c = 0; c < in.count; c += kTile) {
                const std::size_t n = std::min(kTile, in.count - c);
                for (std::size_t j = 0, ej = e + c, tj = t + c; j < m.count; ++j, ej += m.step, tj += m.target_step) {
                    const float* p = table + ej;
                    double* o = out + tj;
                    for (std::size_t i = 0; i < n; ++i) o[i] += p[i];
                }
            }
        });
    } else {
        for_each_block(w, [&](std::size_t e, std::size_t t) {
            for (std::size_t j = 0; j < m.count; ++j, e += m.step, t += m.target_step)
                for (std::size_t i = 0; i < in.count; ++i) out[t + i * in.target_step] += table[e + i * in.step];
        });
    }
}

void walk_max(const TableWalk& w, const float* table, double* out) {
    const WalkDim m = middle_dim(w), in = inner_dim(w);
    for_each_block(w, [&](std::size_t e, std::size_t t) {
        for (std::size_t j = 0; j < m.count; ++j, e += m.step, t += m.target_step)
            for (std::size_t i = 0; i < in.count; ++i) {
                double& o = out[t + i * in.target_step];
                o = std::max(o, static_cast<double>(table[e + i * in.step]));
            }
    });
}

void walk_multiply(const TableWalk& w, float* t, const float* source, const float* factor) {
    if (source == t) multiply_entries<true>(w, t, nullptr, factor);
    else multiply_entries<false>(w, t, source, factor);
}

void walk_copy(const TableWalk& w, float* t, const float* source) {
    for_each_run(w, [&](std::size_t e, std::size_t n, std::size_t step) {
        if (step == 1) std::copy(source + e, source + e + n, t + e);
        else
            for (std::size_t i = 0; i < n; ++i) t[e + i * step] = source[e + i * step];
    });
}

void walk_clear(const TableWalk& w, double* t) {
    for_each_run(w, [&](std::size_t e, std::size_t n, std::size_t step) {
        for (std::size_t i = 0; i < n; ++i) t[e + i * step] = 0.0;
    });
}

void walk_fill(const TableWalk& w, float* t, float value) {
    for_each_run(w, [&](std::size_t e, std::size_t n, std::size_t step) {
        for (std::size_t i = 0; i < n; ++i) t[e + i * step] = value;
    });
}

void walk_scale(const TableWalk& w, float* t, float by) {
    for_each_run(w, [&](std::size_t e, std::size_t n, std::size_t step) {
        for (std::size_t i = 0; i < n; ++i) t[e + i * step] *= by;
    });
}

double walk_total(const TableWalk& w, const float* t) {
    double total = 0.0;
    for_each_run(w, [&](std::size_t e, std::size_t n, std::size_t step) {
        if (step == 1) total += block_sum(t + e, n);
        else
            for (std::size_t i = 0; i < n; ++i) total += t[e + i * step];
    });
    return total;
}

namespace {

// Without branches, so that it vectorises: the quotient is taken with a
// divisor of one where the old entry is zero, and then dropped.
inline void replace_entry(const double* fresh, const float* old_table, float* sepset, float* ratio, std::size_t x) {
    const float now = static_cast<float>(fresh[x]);
    const float old = old_table[x];
    const bool held = old != 0.0f;
    ratio[x] = (held ? now : 0.0f) / (held ? old : 1.0f);
    sepset[x] = now;
}

}  // namespace

void walk_replace(const TableWalk& w, const double* fresh, const float* old_table, float* sepset, float* ratio) {
    for_each_run(w, [&](std::size_t e, std::size_t n, std::size_t step) {
        if (step == 1)
            for (std::size_t i = 0; i < n; ++i) replace_entry(fresh, old_table, sepset, ratio, e + i);
        else
            for (std::size_t i = 0; i < n; ++i) replace_entry(fresh, old_table, sepset, ratio, e + i * step);
    });
}

}  // namespace ravelo
