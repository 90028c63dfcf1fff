#pragma once

#include "TestTelephone.h"

#include <string>
#include <vector>

/// A telephone that synchronises its phonebook and has an observer for it.
class PhonebookTelephone : public TestTelephone {
protected:
    using Batch = std::vector<std::string>;
    using Contact = CloudAnswers::Contact;

    PhonebookTelephone() {
        withPhonebook();
        withObserver();
    }

    static Contact contact(int id, const std::string& lastName = "Clay") {
        Contact made;
        made.id = id;
        made.lastName = lastName;
        return made;
    }
    static Contact gone(int id) {
        Contact made = contact(id);
        made.availability = "Deleted";
        return made;
    }
    static std::vector<Contact> contacts(int first, int count) {
        std::vector<Contact> all;
        for (int id = first; id < first + count; ++id) {
            all.push_back(contact(id));
        }
        return all;
    }
    /// Record text of such a contact.
    static std::string record(const Contact& one) {
        return R"({"firstname":")" + one.firstName + R"(","lastname":")" + one.lastName +
               R"(","businessNumber":"","businessNumber2":"","mobile":")" + one.mobilePhone +
               R"(","homePhone":"","email":"","company":"","jobTitle":"","id":")" + std::to_string(one.id) + "\"}";
    }

    void expectLoginBeforeBook() {
        expectToken();
        expectExtension();
        expectGrants();
    }
    /// A login whose full synchronisation brings these contacts on one page.
    void connectWith(const std::vector<Contact>& all, const std::string& syncToken = "p1") {
        expectLoginBeforeBook();
        expectFullPhonebook(syncToken, all);
        connect();
    }
    /// Full synchronisation, or one from `token`, behind the "?".
    Exchange& expectPage(const std::string& query, const std::string& body) {
        return platform.network.expectGet(path(own("/address-book-sync")) + "?" + query).answers(200, body);
    }
    static std::string full(const std::string& more = std::string()) { return "syncType=FSync&perPage=50" + more; }
    static std::string since(const std::string& token, const std::string& more = std::string()) {
        return "syncType=ISync&perPage=50&syncToken=" + token + more;
    }
    void refresh() {
        service->refreshPhonebookEntries();
        runThreads();
        checkQuiet();
    }
    Batch fullBatch() const { return lastBatch("orvaneFullSync", OrvaneServiceTypes::DATA_PHONEBOOK); }
    Batch incrementalBatch() const { return lastBatch("orvaneIncrementalSync", OrvaneServiceTypes::DATA_PHONEBOOK); }
    std::size_t published() const {
        std::size_t count = 0;
        for (const auto& event : observer.events) {
            count += event.type == OrvaneServiceTypes::DATA_PHONEBOOK ? 1 : 0;
        }
        return count;
    }
    std::size_t bookSize() const {
        Batch records;
        service->prepareDataForObservers(records);
        return records.size();
    }
};
