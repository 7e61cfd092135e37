// What compilers read about null. They know these attributes by name, and look in the assembly itself where the platform has
// none of them, as .NET Standard 2.0. A reference that has none is never null.
using System;

namespace System.Diagnostics.CodeAnalysis
{
    [AttributeUsage(AttributeTargets.Parameter | AttributeTargets.Property | AttributeTargets.Field)]
    internal sealed class AllowNullAttribute : Attribute { }

    [AttributeUsage(AttributeTargets.ReturnValue | AttributeTargets.Property)]
    internal sealed class MaybeNullAttribute : Attribute { }
}

#if NULLABLE_BY_HAND
namespace System.Runtime.CompilerServices
{
    // A compiler that knows of null writes it itself, and refuses it in a source.
    [AttributeUsage(AttributeTargets.Class | AttributeTargets.Struct)]
    internal sealed class NullableContextAttribute : Attribute
    {
        public NullableContextAttribute(byte flag) { Flag = flag; }
        public readonly byte Flag;
    }
}
#endif
