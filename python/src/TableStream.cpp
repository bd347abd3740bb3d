// SPDX-License-Identifier: Apache-2.0
#include "TableStream.h"

#include <cerrno>
#include <memory>
#include <new>

#include "Model/Error.h"

namespace oxa::python {

namespace {

void vChangedCheck(const ModelObject& model, std::uint64_t uChanges) {
    if (model.uChanges() != uChanges) throw oxa::Error("the model was changed while this table was read");
}

// What stands behind a stream. Whoever releases it may have no interpreter any more: then the model stays.
struct HeldStream {
    HeldStream(const Home& home, std::uint64_t uNow)
        : pObject(home.object.inc_ref().ptr()),
          pModel(home.pModel),
          uChanges(uNow) {}
    ~HeldStream() {
        if (!nb::is_alive()) return;
        if (inner.release) inner.release(&inner);
        const nb::gil_scoped_acquire acquired;
        nb::handle(pObject).dec_ref();
    }
    HeldStream(const HeldStream&) = delete;
    HeldStream& operator=(const HeldStream&) = delete;

    PyObject* pObject;
    ModelObject* pModel;
    std::uint64_t uChanges;
    ArrowArrayStream inner{};
    std::string sError{};   // of this layer; empty where the inner one has said what is wrong
};

HeldStream& heldOf(ArrowArrayStream* pStream) { return *static_cast<HeldStream*>(pStream->private_data); }

int iNext(ArrowArrayStream* pStream, ArrowArray* pOut) noexcept {
    if (!nb::is_alive()) return ECANCELED;
    HeldStream& held = heldOf(pStream);
    const nb::gil_scoped_acquire acquired;
    try {
        held.sError.clear();
        const Reading reading(held.pModel->access());
        vChangedCheck(*held.pModel, held.uChanges);
        return held.inner.get_next(&held.inner, pOut);
    } catch (nb::python_error& error) {   // of the wait for a turn
        held.sError = error.what();
        return EINTR;
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    } catch (const std::exception& error) {
        held.sError = error.what();
        return EINVAL;
    }
}

}   // namespace

GuardedReader::GuardedReader(const Home& home, const tables::FileInfo& file, const std::string& sTable)
    : m_model(nb::borrow(home.object)),
      m_pModel(home.pModel) {
    const Reading reading(m_pModel->access());
    m_uChanges = m_pModel->uChanges();
    m_reader.emplace(m_pModel->unguarded(), file, sTable);
}

bool GuardedReader::boNext(tables::Batch& batch, std::size_t iRows) {
    const Reading reading(m_pModel->access());
    vChangedCheck(*m_pModel, m_uChanges);
    return m_reader->next(batch, iRows);
}

void vGuardedStream(const Home& home, const tables::FileInfo& file, const std::string& sTable, std::size_t iRows,
                    ArrowArrayStream* pOut) {
    auto pHeld = std::make_unique<HeldStream>(home, 0);
    {
        const Reading reading(home.pModel->access());
        pHeld->uChanges = home.pModel->uChanges();
        tables::stream(home.pModel->unguarded(), file, sTable, &pHeld->inner, {.rows = iRows});
    }
    pOut->get_schema = [](ArrowArrayStream* pStream, ArrowSchema* pSchema) {
        HeldStream& held = heldOf(pStream);
        held.sError.clear();
        return held.inner.get_schema(&held.inner, pSchema);
    };
    pOut->get_next = iNext;
    pOut->get_last_error = [](ArrowArrayStream* pStream) -> const char* {
        HeldStream& held = heldOf(pStream);
        return held.sError.empty() ? held.inner.get_last_error(&held.inner) : held.sError.c_str();
    };
    pOut->release = [](ArrowArrayStream* pStream) {
        delete &heldOf(pStream);
        pStream->private_data = nullptr;
        pStream->release = nullptr;
    };
    pOut->private_data = pHeld.release();
}

}   // namespace oxa::python
