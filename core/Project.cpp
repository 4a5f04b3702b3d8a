#include "core/Project.h"

namespace synth {

Note NoteRec::note() const {
  Note n;
  n.pitch = pitch;
  n.velocity = velocity;
  n.length = length;
  n.nudge = nudge;
  n.flags = flags;
  std::memcpy(n.locks, locks, sizeof locks);
  return n;
}

void NoteRec::setNote(const Note& n) {
  pitch = n.pitch;
  velocity = n.velocity;
  length = n.length;
  nudge = n.nudge;
  flags = n.flags;
  std::memcpy(locks, n.locks, sizeof locks);
}

ProjectPtr newProject() { return copyOf(defaultProject()); }

ProjectPtr copyOf(const Project& project) {
  ProjectPtr p(static_cast<Project*>(::operator new(sizeof(Project))));
  std::memcpy(static_cast<void*>(p.get()), &project, sizeof(Project));
  return p;
}

const Project& defaultProject() {
  static const Project* const fresh = new Project;
  return *fresh;
}

bool sameBytes(const Project& a, const Project& b) { return std::memcmp(&a, &b, sizeof(Project)) == 0; }

}  // namespace synth
