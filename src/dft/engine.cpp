#include "dft/engine.h"

#include <algorithm>

#include "base/align.h"
#include "base/errno_guard.h"
#include "dft/half.h"
#include "numeric/mxcsr.h"
#include "service/environment.h"
#include "service/memory.h"

namespace qor::dft {
namespace {

constexpr int alignment = 64;
// A block of trailing axes of at most so many bytes goes through all its steps before the next one, if the whole has
// more than fits in a core's cache anyway.
constexpr std::size_t block_bytes = std::size_t{1} << 20, cached_bytes = std::size_t{1} << 18;
constexpr int least_blocks = 8;
// Points times levels that are worth a thread.
constexpr double thread_points = 65536;

constexpr std::size_t whole_lines(std::size_t reals) { return (reals + 15) / 16 * 16; }

// n complex numbers from one place to another, strides in reals.
template <class T>
QOR_INLINE void copy_line(const T* x, std::ptrdiff_t x_stride, T* y, std::ptrdiff_t y_stride, int n) {
  for (int i = 0; i < n; ++i, x += x_stride, y += y_stride) {
    const T re = x[0], im = x[1];
    y[0] = re;
    y[1] = im;
  }
}

}  // namespace

template <class T>
void Engine<T>::find_strides(Direction& d, bool inverse) const {
  const bool real = set_.real();
  const Layout signal = set_.signal_layout(), spectrum = set_.in_place() && !real ? signal : set_.spectrum_layout();
  const int parts[2] = {real ? 1 : 2, set_.packed() ? 1 : 2};
  const Layout* const layouts[2] = {inverse ? &spectrum : &signal, inverse ? &signal : &spectrum};
  const auto parts_of = [&](int side) { return std::ptrdiff_t{parts[side ^ int{inverse}]}; };
  // What no element uses may be any number.
  const auto stride = [&](int side, int axis) {
    return set_.length[axis] == 1 ? 0 : layouts[side]->stride[axis + 1] * parts_of(side);
  };
  const auto distance = [&](int side) { return set_.transforms == 1 ? 0 : layouts[side]->distance * parts_of(side); };

  const int last = set_.rank - 1;
  if (real && set_.packed()) d.temporary = true;
  if (real && inverse && !plain_ && !set_.in_place()) {
    d.temporary |= !folded_ || last_ < 4 || signal.stride[set_.rank] != 1 || spectrum.stride[set_.rank] != 1;
  }
  std::ptrdiff_t dense = 2;
  for (int a = last; a >= 0; --a) {
    std::ptrdiff_t source = stride(0, a), target = stride(1, a), work = target;
    if (real && inverse && a == last) work = 2;
    if (d.temporary) {
      work = dense;
      (inverse ? source : target) = dense;
      dense *= a == last ? last_ / 2 + 1 : set_.length[a];
    }
    d.axis[a] = {set_.length[a], {source, work, target}};
  }
  for (int side = 0; side < 2; ++side) d.offset[side] = layouts[side]->stride[0] * parts_of(side);
  d.batch = {set_.transforms, {distance(0), distance(1), distance(1)}};
}

template <class T>
int Engine<T>::make_plans() {
  for (int a = 0; a < set_.rank; ++a) {
    const int n = set_.length[a];
    if (n == 1 || (set_.real() && a == set_.rank - 1)) continue;
    for (int b = 0; b < a && columns_of_[a] == nullptr; ++b) {
      if (set_.length[b] == n) columns_of_[a] = columns_of_[b];
    }
    if (columns_of_[a] != nullptr) continue;
    if (columns_[a].make(n) != 0) return QOR_DFT_NO_MEMORY;
    columns_of_[a] = &columns_[a];
  }
  return QOR_DFT_OK;
}

// The step of an axis, at all places of `count` other axes and of the batch.
template <class T>
Step Engine<T>::make_step(const Direction& d, int axis, const int* others, int count, bool batch, bool first,
                          bool inverse) const {
  const bool real = set_.real(), rows = real && axis == set_.rank - 1;
  Step s{};
  s.axis = axis;
  s.along = d.axis[axis];
  s.source = first ? from : work;
  s.target = rows ? to : work;
  s.kind = rows ? Step::real_rows : Step::columns;
  Nest& nest = s.outside;
  for (int i = 0; i < count; ++i) {
    nest.add(d.axis[others[i]]);
    if (real && others[i] == set_.rank - 1) nest.loop[nest.depth - 1].count = columns_along_last();
  }
  if (batch && !d.temporary) nest.add(d.batch);
  s.patched = inverse && folded_ && first && !d.temporary && !set_.in_place();
  if (!real && first) {
    s.scales = true;
    const auto beside = [&](const Loop& l) { return l.count > 1 && l.stride[from] == 2 && l.stride[work] == 2; };
    const bool dense = s.along.stride[from] == 2 && s.along.stride[work] == 2;
    const bool together =
        s.along.count > 1 && (dense ? columns_of_[axis]->serves_rows() && nest.count() >= Columns<T>::lanes
                                    : std::any_of(nest.loop, nest.loop + nest.depth, beside));
    if (!together) s.kind = Step::complex_rows;
  }
  arrange(nest, s.source, s.target, !s.patched);
  s.across = nest.depth > 0 ? nest.loop[--nest.depth] : Loop{1, {0, 0, 0}};
  s.at_once = s.kind != Step::columns ? std::clamp(2048 / s.along.count, 1, 16) : columns_of_[axis]->at_once();
  if (s.scales && s.kind == Step::columns && s.across.stride[s.target] != 2) {
    s.at_once = std::min(s.at_once, columns_of_[axis]->rows_at_once());
  }
  s.runs = (s.across.count + s.at_once - 1) / s.at_once;
  return s;
}

template <class T>
void Engine<T>::make_program(Direction& d, bool inverse) {
  const bool real = set_.real(), rows_last = real && inverse;
  // Axes by stride, the largest first; that of the rows is the last one. The others without length 1.
  int order[most_dimensions], axes = 0;
  for (int a = 0; a < set_.rank; ++a) {
    if (set_.length[a] > 1 && !(real && a == set_.rank - 1)) order[axes++] = a;
  }
  sort_few(order, axes,
           [&](int a, int b) { return std::abs(d.axis[a].stride[work]) > std::abs(d.axis[b].stride[work]); });
  if (real || axes == 0) order[axes++] = set_.rank - 1;

  std::size_t bytes = 2 * sizeof(T);
  int fused = 0;  // trailing axes that make a block
  for (int f = 1; f <= axes; ++f) {
    const int a = order[axes - f];
    bytes *= static_cast<std::size_t>(real && a == set_.rank - 1 ? columns_along_last() : set_.length[a]);
    int places = d.temporary ? 1 : set_.transforms;
    for (int i = 0; i < axes - f; ++i) places *= set_.length[order[i]];
    const bool large = static_cast<std::size_t>(places) > cached_bytes / bytes;
    if (f >= 2 && bytes <= block_bytes && places >= least_blocks && large) fused = f;
  }
  const int alone = axes - fused;  // axes whose steps are phases

  Program& program = d.program;
  const auto add_alone = [&](int i) {
    int others[most_dimensions], count = 0;
    for (int j = 0; j < axes; ++j) {
      if (j != i) others[count++] = order[j];
    }
    Phase& p = program.phase[program.phases++];
    p.first = program.steps;
    program.step[program.steps] = make_step(d, order[i], others, count, true, program.steps == 0, inverse);
    p.last = ++program.steps;
  };
  const auto add_block = [&] {
    Phase& p = program.phase[program.phases++];
    p.first = program.steps;
    for (int i = 0; i < alone; ++i) p.places.add(d.axis[order[i]]);
    if (!d.temporary) p.places.add(d.batch);
    arrange(p.places, from, to, false);
    for (int i = 0; i < fused; ++i) {
      const int j = rows_last ? alone + i : axes - 1 - i;
      int others[most_dimensions], count = 0;
      for (int k = alone; k < axes; ++k) {
        if (k != j) others[count++] = order[k];
      }
      program.step[program.steps] = make_step(d, order[j], others, count, false, program.steps == 0, inverse);
      ++program.steps;
    }
    p.last = program.steps;
  };
  if (rows_last) {
    for (int i = 0; i < alone; ++i) add_alone(i);
    if (fused > 0) add_block();
  } else {
    if (fused > 0) add_block();
    for (int i = alone - 1; i >= 0; --i) add_alone(i);
  }

  for (int i = 0; i + 1 < axes; ++i) d.edge.add(d.axis[order[i]]);
}

template <class T>
std::size_t Engine<T>::work_of(const Step& s) const {
  const std::size_t n = static_cast<std::size_t>(s.along.count);
  switch (s.kind) {
    case Step::complex_rows:
      return whole_lines(2 * n) + line_of(s).work_size();
    case Step::real_rows:
      return whole_lines(n + 2) + real_line_.work_size();
    default:
      return whole_lines(2 * n * static_cast<std::size_t>(s.at_once)) + columns_of_[s.axis]->work_size();
  }
}

template <class T>
int Engine<T>::make(const Settings& settings) {
  set_ = settings;
  last_ = set_.length[set_.rank - 1];
  double points = 1;
  plain_ = true;
  for (int a = 0; a < set_.rank; ++a) {
    points *= set_.length[a];
    if (a + 1 < set_.rank && set_.length[a] > 1) plain_ = false;
  }
  folded_ = set_.real() && !plain_ && last_ % 2 == 0;
  int levels = 1;
  for (double p = points; p > 2; p /= 2) ++levels;
  const double worth = points * set_.transforms * levels / (set_.real() ? 2 : 1) / thread_points;
  worth_ = static_cast<int>(std::clamp(worth, 1.0, 1024.0));

  if (make_plans() != QOR_DFT_OK) return QOR_DFT_NO_MEMORY;
  if (set_.real() && real_line_.make(last_) != 0) return QOR_DFT_NO_MEMORY;
  for (int i = 0; i < 2; ++i) {
    Direction& d = direction_[i];
    find_strides(d, i == 1);
    make_program(d, i == 1);
    for (int s = 0; s < d.program.steps; ++s) {
      const Step& step = d.program.step[s];
      if (step.kind == Step::complex_rows && line_of(step).length() != step.along.count) {
        if (line_[i].make(step.along.count) != 0) return QOR_DFT_NO_MEMORY;
      }
      thread_work_ = std::max(thread_work_, whole_lines(work_of(step)));
    }
  }
  if (direction_[0].temporary || direction_[1].temporary) {
    temporary_ = 2 * static_cast<std::size_t>(last_ / 2 + 1);
    for (int a = 0; a + 1 < set_.rank; ++a) temporary_ *= static_cast<std::size_t>(set_.length[a]);
    temporary_ = whole_lines(temporary_);
  }
  return QOR_DFT_OK;
}

// ---- transforms -----------------------------------------------------------------------------------------------------

template <class T>
template <bool Inverse>
void Engine<T>::row(const Step& s, Place<T> at, T scale, T* work) const {
  const int n = s.along.count;
  const T* x = at.at[s.source];
  T* const out = at.at[s.target];
  const std::ptrdiff_t in_stride = s.along.stride[s.source], out_stride = s.along.stride[s.target];
  if (s.kind == Step::complex_rows) {
    T* const rest = work + whole_lines(2 * static_cast<std::size_t>(n));
    const fft::Plan<T>& line = line_of(s);
    if (in_stride == 2 && out_stride == 2) {
      line.template run<Inverse>(x, out, scale, rest);
      return;
    }
    copy_line(x, in_stride, work, 2, n);
    line.template run<Inverse>(work, work, scale, rest);
    copy_line(work, 2, out, out_stride, n);
    return;
  }
  T* const rest = work + whole_lines(static_cast<std::size_t>(n + 2));
  const int h = folded_ ? n / 2 : n / 2 + 1;
  const bool even = n % 2 == 0;
  if constexpr (!Inverse) {
    T* const y = out_stride == 2 ? out : work;
    if (in_stride != 1) {
      for (int i = 0; i < n; ++i) work[i] = x[i * in_stride];
      x = work;
    }
    real_line_.forward(x, y, scale, rest);
    if (!even) {
      std::copy_backward(y + 1, y + n, y + n + 1);
      y[1] = 0;
    } else if (!folded_) {
      y[n] = y[1];
      y[1] = y[n + 1] = 0;
    }
    if (y != out) copy_line(y, 2, out, out_stride, h);
  } else {
    if (in_stride != 2) {
      copy_line(x, in_stride, work, 2, h);
      x = work;
    }
    T* const y = out_stride == 1 ? out : work;
    real_line_.inverse(x[0], folded_ ? x[1] : even ? x[n] : T(0), x + 2, y, scale, rest);
    if (y != out) {
      for (int i = 0; i < n; ++i) out[i * out_stride] = y[i];
    }
  }
}

template <class T>
template <bool Inverse>
void Engine<T>::columns(const Step& s, Place<T> at, int count, bool patched, T scale, T* work_space) const {
  constexpr int L = Columns<T>::lanes;
  const Columns<T>& plan = *columns_of_[s.axis];
  const int n = s.along.count;
  const T* const in = at.at[s.source];
  T* const out = at.at[s.target];
  const std::ptrdiff_t in_down = s.along.stride[s.source], out_down = s.along.stride[s.target],
                       in_across = s.across.stride[s.source], out_across = s.across.stride[s.target];
  if (count % L == 0 && !patched) {
    plan.template run<Inverse>({in, in_down, in_across}, {out, out_down, out_across}, count, scale, work_space);
    return;
  }
  const int wide = (count + L - 1) / L * L;
  T* const block = work_space;
  T* const rest = block + whole_lines(2 * static_cast<std::size_t>(n) * static_cast<std::size_t>(s.at_once));
  for (int j = 0; j < n; ++j) {
    T* const line = block + 2 * j * wide;
    copy_line(in + j * in_down, in_across, line, 2, count);
    if (patched) copy_line(at.at[work] + j * s.along.stride[work], 0, line, 0, 1);
    for (int c = 0; c < 2 * count; ++c) line[c] *= scale;
    std::fill(line + 2 * count, line + 2 * wide, T(0));
  }
  const std::ptrdiff_t down = 2 * wide;
  plan.template run<Inverse>({block, down, 2}, {block, down, 2}, wide, 1, rest);
  for (int j = 0; j < n; ++j) copy_line(block + 2 * j * wide, 2, out + j * out_down, out_across, count);
}

template <class T>
template <bool Inverse>
void Engine<T>::run_step(const Step& s, Place<T> start, T scale, int first, int last, T* work) const {
  Place<T> turn = start;
  for (int item = first; item < last; ++item) {
    const int run = item % s.runs;
    if (run == 0 || item == first) turn = s.outside.place(start, item / s.runs);
    const int done = run * s.at_once, count = std::min(s.at_once, s.across.count - done);
    Place<T> at = turn.moved(s.across, done);
    if (s.kind == Step::columns) {
      columns<Inverse>(s, at, count, s.patched && run == 0, s.scales ? scale : T(1), work);
    } else {
      for (int i = 0; i < count; ++i, at = at.moved(s.across, 1)) row<Inverse>(s, at, scale, work);
    }
  }
}

// Z into column 0 of the work array.
template <class T>
void Engine<T>::fold(Place<T> start, Team team) const {
  const Direction& d = direction_[1];
  const int items = d.edge.count(), batch = d.temporary ? 1 : set_.transforms;
  const std::ptrdiff_t middle = last_ / 2 * d.axis[set_.rank - 1].stride[from];
  for (int b = 0; b < batch; ++b) {
    const Place<T> base = start.moved(d.batch, b);
    for (int i = team.first(items); i < team.last(items); ++i) {
      const Place<T> at = d.edge.place(base, i);
      const T re = at.at[from][0] - at.at[from][middle + 1], im = at.at[from][1] + at.at[from][middle];
      at.at[work][0] = re;
      at.at[work][1] = im;
    }
  }
}

// Z in column 0 into X(0) and X(n/2).
template <class T>
void Engine<T>::unfold(Place<T> start, Team team) const {
  const Direction& d = direction_[0];
  const Nest& nest = d.edge;
  const Loop& inner = nest.loop[nest.depth - 1];
  const std::ptrdiff_t middle = last_ / 2 * d.axis[set_.rank - 1].stride[to], step = inner.stride[to];
  const int outer = nest.count() / inner.count, batch = d.temporary ? 1 : set_.transforms;
  const auto part = [&](T* p, T* q) {
    const T re = p[0], im = p[1], re2 = q[0], im2 = q[1];
    const T x_re = T(0.5) * (re + re2), x_im = T(0.5) * (im - im2), y_re = T(0.5) * (im + im2),
            y_im = T(0.5) * (re2 - re);
    q[0] = x_re, q[1] = -x_im, q[middle] = y_re, q[middle + 1] = -y_im;
    p[0] = x_re, p[1] = x_im, p[middle] = y_re, p[middle + 1] = y_im;
  };
  for (int b = 0; b < batch; ++b) {
    T* const base = start.moved(d.batch, b).at[to];
    for (int i = team.first(outer); i < team.last(outer); ++i) {
      T *p = base, *q = base;
      int order = 0;  // which of i and -i comes first, by their first digits that differ
      for (int l = nest.depth - 2, rest = i; l >= 0; --l) {
        const int n = nest.loop[l].count, digit = rest % n, mirrored = digit == 0 ? 0 : n - digit;
        rest /= n;
        p += digit * nest.loop[l].stride[to];
        q += mirrored * nest.loop[l].stride[to];
        if (digit != mirrored) order = digit < mirrored ? -1 : 1;
      }
      if (order > 0) continue;
      const int end = order == 0 ? inner.count / 2 + 1 : inner.count;
      part(p, q);
      for (int j = 1; j < end; ++j) part(p + j * step, q + (inner.count - j) * step);
    }
  }
}

template <class T>
template <bool Inverse>
void Engine<T>::run(Place<T> start, T scale, Team team, T* work_space) const {
  const Direction& d = direction_[Inverse];
  if (Inverse && folded_) {
    fold(start, team);
    team.wait();
  }
  const Program& program = d.program;
  for (int i = 0; i < program.phases; ++i) {
    const Phase& phase = program.phase[i];
    if (phase.last - phase.first == 1) {
      const Step& step = program.step[phase.first];
      const int items = step.items();
      run_step<Inverse>(step, start, scale, team.first(items), team.last(items), work_space);
    } else {
      const int places = phase.places.count();
      for (int p = team.first(places); p < team.last(places); ++p) {
        const Place<T> at = phase.places.place(start, p);
        for (int s = phase.first; s < phase.last; ++s) {
          run_step<Inverse>(program.step[s], at, scale, 0, program.step[s].items(), work_space);
        }
      }
    }
    if (i + 1 < program.phases || (!Inverse && folded_)) team.wait();
  }
  if (!Inverse && folded_) unfold(start, team);
}

template <class T>
int Engine<T>::threads() const {
  if (worth_ < 2 || service::in_serial()) return 1;
  const int most = std::min(worth_, most_threads());
  return std::max(1, set_.thread_limit > 0 ? std::min(most, set_.thread_limit) : most);
}

template <class T>
template <bool Inverse>
int Engine<T>::compute(const T* in, T* out) const {
  const ErrnoGuard keep;
  const Direction& d = direction_[Inverse];
  const int team_size = threads();
  const std::size_t temporary = d.temporary ? temporary_ : 0;
  const std::uint64_t bytes =
      (temporary + std::uint64_t{thread_work_} * static_cast<unsigned>(team_size)) * sizeof(T) + alignment;
  if (bytes > INT32_MAX) return QOR_DFT_NO_MEMORY;
  const service::Scratch scratch(static_cast<int>(bytes));
  if (!scratch) return QOR_DFT_NO_MEMORY;
  T* const block = align_up<T>(scratch.get(), alignment);
  T* const spaces = block + temporary;
  T* const source = const_cast<T*>(in) + d.offset[0];
  T* const target = out + d.offset[1];
  const double scale = Inverse ? set_.backward_scale : set_.forward_scale;

  in_parallel(team_size, [&](Team team) {
    const numeric::ArithmeticGuard guard;
    T* const own = spaces + thread_work_ * static_cast<std::size_t>(team.rank);
    const T factor = static_cast<T>(numeric::pinned(scale));
    if (!d.temporary) {
      run<Inverse>({{source, target, target}}, factor, team, own);
      return;
    }
    for (int m = 0; m < set_.transforms; ++m) {
      T* const x = source + m * d.batch.stride[from];
      T* const y = target + m * d.batch.stride[to];
      const Layout layout = set_.spectrum_layout();
      if (Inverse && team.rank == 0) {
        std::fill_n(block, temporary, T(0));
        over_half(
            set_, layout, block, x, [](T& z, const T& p, int sign) { z = sign < 0 ? -p : p; }, [](T&) {});
      }
      team.wait();
      if (Inverse) {
        run<Inverse>({{block, block, y}}, factor, team, own);
      } else {
        run<Inverse>({{x, block, block}}, factor, team, own);
      }
      team.wait();
      if (!Inverse && team.rank == 0) {
        over_half(
            set_, layout, block, y,
            [](const T& z, T& p, int sign) {
              if (sign > 0) p = z;
            },
            [](T& p) { p = 0; });
      }
      team.wait();
    }
  });
  return QOR_DFT_OK;
}

template class Engine<float>;
template class Engine<double>;
template int Engine<float>::compute<false>(const float*, float*) const;
template int Engine<float>::compute<true>(const float*, float*) const;
template int Engine<double>::compute<false>(const double*, double*) const;
template int Engine<double>::compute<true>(const double*, double*) const;

}  // namespace qor::dft
